// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/Loupe.h"
#include "Overlay/OverlayContents.h"
#include "Support/Geometry.h"

#include <QImage>
#include <QPoint>
#include <QRect>

#include <optional>

namespace vantrell {

/// The loupe of a drag on one display, and the pixels that it has to show. A value type.
class LoupePixels {
public:
    void set(const QImage &picture, const QPoint &corner) {
        m_picture = picture;
        m_corner = corner;
    }
    /// What lies below may have changed.
    void forget() { m_picture = {}; }

    /// The loupe near the pointer, which is in points from the display's corner; none while no edge is
    /// dragged.
    std::optional<Loupe> loupe(const OverlayContents &contents, const QRect &selected,
                               const Point &pointer) const;
    /// The part of the display that has to be fetched before the loupe has all its pixels; empty: none.
    QRect missing(const Loupe &loupe, const QRect &wholeDisplay) const;

private:
    QImage m_picture;
    QPoint m_corner;
};

} // namespace vantrell
