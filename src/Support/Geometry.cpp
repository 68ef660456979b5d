// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Geometry.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

PixelRect intersection(const PixelRect &a, const PixelRect &b) {
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.right(), b.right());
    const int bottom = std::min(a.bottom(), b.bottom());
    if (right <= left || bottom <= top)
        return {};
    return {left, top, right - left, bottom - top};
}

PixelRect united(const PixelRect &a, const PixelRect &b) {
    if (a.isEmpty())
        return b;
    if (b.isEmpty())
        return a;
    const int left = std::min(a.x, b.x);
    const int top = std::min(a.y, b.y);
    return {left, top, std::max(a.right(), b.right()) - left, std::max(a.bottom(), b.bottom()) - top};
}

PixelSize pixelSize(const Size &size, double scale) {
    return {int(size.width * scale), int(size.height * scale)};
}

Rect toPoints(const PixelRect &rect, double scale) {
    return {rect.x / scale, rect.y / scale, rect.width / scale, rect.height / scale};
}

PixelRect toPixels(const Rect &rect, double scale) {
    const PixelSize size = pixelSize({rect.width, rect.height}, scale);
    return {int(std::lround(rect.x * scale)), int(std::lround(rect.y * scale)), size.width, size.height};
}

Point flipped(const Point &point) {
    return {point.x, -point.y};
}

Rect flipped(const Rect &rect) {
    return {rect.x, -rect.maxY(), rect.width, rect.height};
}

} // namespace vantrell
