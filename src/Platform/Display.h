// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <string>

namespace vantrell {

/// One monitor of the desktop, as it was when it was listed.
struct Display {
    /// What the user names it by on the command line: the output's name ("DP-1").
    std::string id;
    /// The maker's name when known, else the id.
    std::string name;
    /// Where it lies on the desktop, in points with top-left origin; negative left of or above the primary.
    Rect frame;
    /// The same in the device's pixels.
    PixelRect pixels;
    /// Pixels for each point.
    double scale = 1;
    bool isPrimary = false;
    /// The compositor tells portals where its displays lie. Where it does not, all are at 0, 0 to them.
    bool isPlaceShared = true;

    bool operator==(const Display &) const = default;
};

} // namespace vantrell
