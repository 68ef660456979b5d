// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "Support/Settings.h"

#include <optional>
#include <string>

namespace vantrell {

/// The last selected area of each display, kept in the settings: points from the display's corner. Main
/// thread; the settings outlive it.
class AreaMemory {
public:
    explicit AreaMemory(Settings &settings) : m_settings(settings) {}

    void save(const Rect &rect, const std::string &displayId);
    /// None when nothing sensible is stored, or what is stored does not lie within the bounds any more.
    std::optional<Rect> restore(const std::string &displayId, const Rect &within) const;

private:
    Settings &m_settings;
};

} // namespace vantrell
