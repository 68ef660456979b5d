// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <QPointF>
#include <QRect>
#include <QRectF>

namespace vantrell {

// The project's shapes as Qt's painting and widgets take them, and back: the same numbers, nothing converted.

inline QRect toQt(const PixelRect &rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}
inline QRectF toQt(const Rect &rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}
inline Rect fromQt(const QRectF &rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}
inline Point fromQt(const QPointF &point) {
    return {point.x(), point.y()};
}

} // namespace vantrell
