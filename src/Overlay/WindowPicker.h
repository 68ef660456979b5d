// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/WindowDescription.h"
#include "Support/Geometry.h"

#include <QRegion>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantrell {

/// Which window the window tool lights: the topmost one below the pointer, or the next one by key. A value
/// type.
class WindowPicker {
public:
    /// The topmost first. The lit window stays lit when it is among them.
    void setWindows(std::vector<WindowDescription> windows);
    const std::vector<WindowDescription> &windows() const { return m_windows; }

    /// None where there is no window.
    const WindowDescription *lit() const;
    /// Each of these is true when another window is lit now.
    bool pointAt(const Point &desktopPixel);
    bool cycle(bool backward);
    bool clear();

    /// The part of the lit window that no other one covers, in the desktop's pixels.
    QRegion visiblePart() const;

private:
    bool light(std::optional<std::uint32_t> id);

    std::vector<WindowDescription> m_windows;
    std::optional<std::uint32_t> m_lit;
};

} // namespace vantrell
