// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Support/Geometry.h"
#include "Support/PlatformError.h"

#include <expected>
#include <vector>

namespace vantrell {

// How the desktop's pixels and the displays' points belong together. A desktop whose displays have different
// scales has no single system of points: each capture counts in the points of the display that holds it, and
// continues them over the rest of the desktop.

/// Desktop pixels in the display's points, continued beyond its edges.
Point inPointsOf(const Display &display, const Point &desktopPixel);
Rect inPointsOf(const Display &display, const PixelRect &desktopPixels);
Rect inPointsOf(const Display &display, const Rect &desktopPixels);

/// Desktop pixels of a place on the display, given in points from its corner. What the fraction of a scale
/// leaves of the display's last pixels belongs to a place that reaches the display's edge.
Point inPixelsOf(const Display &display, const Point &fromCorner);
PixelRect inPixelsOf(const Display &display, const Rect &fromCorner);

/// The display that holds the most of the rectangle; the nearest one when none touches it. `displays` is not
/// empty.
const Display &displayHolding(const std::vector<Display> &displays, const PixelRect &desktopPixels);

/// The part of an area that the displays' common bounds hold; `badArea` when the area is smaller than a pixel
/// or touches no display.
std::expected<PixelRect, PlatformError> areaOnDisplays(const std::vector<Display> &displays,
                                                       const PixelRect &desktopPixels);

} // namespace vantrell
