// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Platform/X11/X11Monitors.h"
#include "Support/Geometry.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// Where a captured part of the desktop is: it goes with the display that it was chosen on. Thread-safe.
class X11AreaPlace {
public:
    /// The whole of a display, whatever size it takes.
    explicit X11AreaPlace(const Display &display);
    /// An area, in the desktop's pixels. It keeps its place on `display` when it lies wholly there; one
    /// across several displays stays where it is on the desktop.
    X11AreaPlace(const Display &display, const PixelRect &area);

    PixelRect place() const;

    /// Follows the display to where it is among the monitors of now. False when it is not among them.
    bool follow(const std::vector<X11Monitor> &monitors);

private:
    /// Absent: the area belongs to no display.
    const std::optional<std::string> m_display;
    const bool m_isWhole;
    mutable std::mutex m_mutex;
    PixelRect m_displayPixels;
    PixelRect m_place;
};

} // namespace vantrell
