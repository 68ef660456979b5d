// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/Theme.h"

#include <QPainterPath>
#include <QPixmap>
#include <QRegion>
#include <QSize>

namespace vantrell {

/// How far the shadow reaches beyond a panel, in points.
inline constexpr int panelShadowReach = 34;

/// The rounded form of a panel within its window.
struct PanelShape {
    /// The window's size and the panel's place in it, in points.
    QSize window;
    QRectF panel;
    double radius = 14;
    double scale = 1;

    bool operator==(const PanelShape &) const = default;

    /// The whole window's picture: shadow, ground and the line around. Opaque and without a shadow when
    /// nothing blends.
    QPixmap picture(const Theme &theme, bool isBlended) const;
    /// What of the window belongs to the panel, in pixels.
    QRegion region() const;
};

/// A rounded rectangle whose corners are no rounder than it has room for.
QPainterPath roundedPath(const QRectF &rect, double radius);

/// Draws the soft shadow of a rounded form, in the painter's points, and nothing inside the form.
void drawShadow(QPainter &painter, const QSize &window, const QRectF &form, double radius, double scale);

} // namespace vantrell
