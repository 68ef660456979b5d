// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/Theme.h"

#include <QPixmap>
#include <QPoint>

class QPainter;

namespace vantrell {

/// A card's ground and the shadow that it casts: drawn once, shown below each card. Main thread.
class CardFace {
public:
    /// Draws both for that theme and scale; opaque and without a shadow when nothing blends.
    CardFace(const Theme &theme, double scale, bool isBlended);

    double scale() const { return m_ground.devicePixelRatio(); }

    // With the card's body at that place, in points.

    void drawShadow(QPainter &painter, const QPoint &body) const;
    void drawGround(QPainter &painter, const QPoint &body) const;

private:
    QPixmap m_ground;
    QPixmap m_shadow;
};

} // namespace vantrell
