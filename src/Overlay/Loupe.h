// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <QImage>
#include <QPoint>
#include <QRectF>

class QPainter;

namespace vantrell {

/// The pixels around the edge that is dragged, each as a square, with the edge between them. A value type.
struct Loupe {
    /// As many pixels across and down, half of them on either side of the middle.
    static constexpr int cells = 16;

    /// In the view's points.
    QRectF frame;
    /// The corner between four pixels in the middle, in the display's pixels.
    QPoint middle;
    /// The selection, in the display's pixels: what lies outside is dimmed.
    QRect selection;
    /// A picture of the display, or of a part of it that begins at `pictureCorner`; null while there is none.
    QImage picture;
    QPoint pictureCorner;

    bool operator==(const Loupe &) const = default;

    /// Beside the pointer, on the side that has room.
    static QRectF placed(const Point &pointer, const Rect &bounds);
    /// What of the display it shows, in the display's pixels.
    QRect shownPixels() const;
    void draw(QPainter &painter) const;
};

} // namespace vantrell
