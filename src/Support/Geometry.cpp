// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Geometry.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

bool contains(const Rect &rect, const Point &point) {
    return rect.x <= point.x && point.x < rect.maxX() && rect.y <= point.y && point.y < rect.maxY();
}

bool contains(const Rect &outer, const Rect &inner) {
    return outer.x <= inner.x && inner.maxX() <= outer.maxX() && outer.y <= inner.y &&
           inner.maxY() <= outer.maxY();
}

Rect grown(const Rect &rect, double by) {
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

Rect integral(const Rect &rect) {
    const double x = std::floor(rect.x), y = std::floor(rect.y);
    return {x, y, std::ceil(rect.maxX()) - x, std::ceil(rect.maxY()) - y};
}

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

PixelRect fitted(PixelSize source, PixelSize picture) {
    const double scale =
        std::min(double(picture.width) / source.width, double(picture.height) / source.height);
    const int width = std::clamp(int(std::lround(source.width * scale)), 1, picture.width);
    const int height = std::clamp(int(std::lround(source.height * scale)), 1, picture.height);
    return {(picture.width - width) / 2, (picture.height - height) / 2, width, height};
}

Rect shownArea(const PixelRect &source, PixelSize picture) {
    const PixelRect place = fitted(source.size(), picture);
    const double across = double(source.width) / place.width;
    const double down = double(source.height) / place.height;
    return {source.x - place.x * across, source.y - place.y * down, picture.width * across,
            picture.height * down};
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
