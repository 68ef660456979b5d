// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QImage>
#include <QRectF>
#include <QString>

class QPainter;

namespace vantrell {

/// A dark capsule with a line of text, and maybe an icon or a quieter second part. Points of its view. A
/// value type.
struct OverlayLabel {
    QString text;
    QString quietText;
    QImage icon;
    QRectF frame;

    bool operator==(const OverlayLabel &) const = default;

    /// As large as its content needs, at most so wide: longer text is cut in its middle. At the origin.
    static OverlayLabel sized(const QString &text, double mostWide, const QString &quietText = {},
                              const QImage &icon = {});
    void moveTo(const QPointF &topLeft) { frame.moveTopLeft(topLeft); }
    void draw(QPainter &painter) const;
};

} // namespace vantrell
