// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/DisplayLayout.h"

#include "Platform/ScreenError.h"

#include <algorithm>
#include <cstdint>

namespace vantrell {

namespace {

std::int64_t sharedPixels(const Display &display, const PixelRect &rect) {
    const PixelRect common = intersection(display.pixels, rect);
    return std::int64_t(common.width) * common.height;
}

std::int64_t squaredDistance(const Display &display, const PixelRect &rect) {
    const std::int64_t x = std::max({0, display.pixels.x - rect.right(), rect.x - display.pixels.right()});
    const std::int64_t y = std::max({0, display.pixels.y - rect.bottom(), rect.y - display.pixels.bottom()});
    return x * x + y * y;
}

} // namespace

Point inPointsOf(const Display &display, const Point &desktopPixel) {
    return {display.frame.x + (desktopPixel.x - display.pixels.x) / display.scale,
            display.frame.y + (desktopPixel.y - display.pixels.y) / display.scale};
}

Rect inPointsOf(const Display &display, const PixelRect &desktopPixels) {
    return inPointsOf(display, toPoints(desktopPixels, 1));
}

Rect inPointsOf(const Display &display, const Rect &desktopPixels) {
    const Point corner = inPointsOf(display, Point{desktopPixels.x, desktopPixels.y});
    return {corner.x, corner.y, desktopPixels.width / display.scale, desktopPixels.height / display.scale};
}

Point inPixelsOf(const Display &display, const Point &fromCorner) {
    return {display.pixels.x + fromCorner.x * display.scale, display.pixels.y + fromCorner.y * display.scale};
}

PixelRect inPixelsOf(const Display &display, const Rect &fromCorner) {
    const PixelRect inside = toPixels(fromCorner, display.scale);
    const int right = fromCorner.maxX() >= display.frame.width ? display.pixels.width : inside.right();
    const int bottom = fromCorner.maxY() >= display.frame.height ? display.pixels.height : inside.bottom();
    return intersection(
        {display.pixels.x + inside.x, display.pixels.y + inside.y, right - inside.x, bottom - inside.y},
        display.pixels);
}

const Display &displayHolding(const std::vector<Display> &displays, const PixelRect &desktopPixels) {
    return *std::ranges::max_element(displays, {}, [&](const Display &display) {
        return std::pair(sharedPixels(display, desktopPixels), -squaredDistance(display, desktopPixels));
    });
}

std::expected<PixelRect, PlatformError> areaOnDisplays(const std::vector<Display> &displays,
                                                       const PixelRect &desktopPixels) {
    if (desktopPixels.isEmpty())
        return std::unexpected(screenError(ScreenErrorCode::badArea, "The area is smaller than a pixel"));
    PixelRect bounds;
    for (const Display &display : displays)
        bounds = united(bounds, display.pixels);
    const bool touchesOne = std::ranges::any_of(
        displays, [&](const Display &display) { return sharedPixels(display, desktopPixels) > 0; });
    if (!touchesOne)
        return std::unexpected(screenError(ScreenErrorCode::badArea, "The area lies outside every display"));
    return intersection(bounds, desktopPixels);
}

} // namespace vantrell
