// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

// The only place where points, pixels, scales and the two vertical origins are converted. Points are the
// desktop's logical units; pixels are the device's. In "top-left" coordinates y grows downwards and a
// rectangle's origin is its upper left corner; in "bottom-left" coordinates y grows upwards and the origin is
// the lower left corner.

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point &) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size &) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    bool operator==(const Rect &) const = default;
};

struct PixelSize {
    int width = 0;
    int height = 0;
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(const PixelSize &) const = default;
};

/// Pixels, top-left origin.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    int right() const { return x + width; }
    int bottom() const { return y + height; }
    PixelSize size() const { return {width, height}; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(const PixelRect &) const = default;
};

/// The edges at the lower coordinates belong to the rectangle, those at the higher ones do not.
bool contains(const Rect &rect, const Point &point);
/// All of `inner` lies within, touching edges included.
bool contains(const Rect &outer, const Rect &inner);

/// Grown by so much on every side; shrunk when negative, to a negative size where it was too small for that.
Rect grown(const Rect &rect, double by);

/// Made whole-numbered outward.
Rect integral(const Rect &rect);

/// The common part; empty when there is none.
PixelRect intersection(const PixelRect &a, const PixelRect &b);

/// The smallest rectangle that holds both; an empty one adds nothing.
PixelRect united(const PixelRect &a, const PixelRect &b);

/// Where a picture comes to lie that is fitted into one of another size: whole, in the middle, with its
/// proportions kept. Neither is empty.
PixelRect fitted(PixelSize source, PixelSize picture);

/// The part of the desktop that a picture shows into which `source` (desktop pixels) is fitted, the bars
/// included. In pixels, with fractions.
Rect shownArea(const PixelRect &source, PixelSize picture);

/// Pixels of `size` points at `scale`, the fraction cut off.
PixelSize pixelSize(const Size &size, double scale);

/// The rectangle in points that a pixel rectangle covers at `scale`.
Rect toPoints(const PixelRect &rect, double scale);

/// The pixel rectangle of a rectangle in points: origin rounded, size cut off as in `pixelSize`.
PixelRect toPixels(const Rect &rect, double scale);

/// From top-left to bottom-left coordinates and back: the vertical axis turns over, its zero line stays.
Point flipped(const Point &point);
Rect flipped(const Rect &rect);

} // namespace vantrell
