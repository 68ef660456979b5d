// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/StatusBarLogo.h"

#include "Panels/Theme.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <functional>

namespace vantrell {

namespace {

constexpr QSizeF logoBox(757, 828);

/// The corners of a viewfinder around a dot.
QPainterPath logoPath() {
    constexpr double line = 112;
    constexpr double reach = 200;
    constexpr double round = 150;
    const QRectF box = QRectF(QPointF(0, 0), logoBox).adjusted(line / 2, line / 2, -line / 2, -line / 2);
    QPainterPath corners;
    for (const double right : {0.0, 1.0})
        for (const double bottom : {0.0, 1.0}) {
            const QPointF corner(right > 0 ? box.right() : box.left(), bottom > 0 ? box.bottom() : box.top());
            const QPointF inwardX(right > 0 ? -1 : 1, 0);
            const QPointF inwardY(0, bottom > 0 ? -1 : 1);
            corners.moveTo(corner + inwardX * reach);
            corners.lineTo(corner + inwardX * round);
            corners.quadTo(corner, corner + inwardY * round);
            corners.lineTo(corner + inwardY * reach);
        }
    QPainterPathStroker stroker;
    stroker.setWidth(line);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    QPainterPath dot;
    dot.addEllipse(box.center(), 160, 160);
    return stroker.createStroke(corners).simplified().united(dot);
}

/// Drawn for each size that trays use, in a square, so that no tray has to scale it.
QIcon drawn(const std::function<void(QPainter &, double)> &draw) {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        draw(painter, size);
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// Trays are dark or light whatever the theme: a tone that stands out from both, lighter in a dark theme.
QColor logoColor() {
    const bool isDarkTheme = QGuiApplication::palette().color(QPalette::WindowText).lightnessF() > 0.5;
    return isDarkTheme ? Theme::dark().accent : QColor(0x45, 0xa0, 0x92);
}

void drawInCircle(QPainter &painter, double size, const QColor &color,
                  const std::function<void(QPainter &, double)> &sign) {
    const double inset = size / 16;
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QRectF(inset, inset, size - 2 * inset, size - 2 * inset));
    sign(painter, size);
}

} // namespace

QIcon logoStatusIcon() {
    return drawn([](QPainter &painter, double size) {
        const double scale = size / logoBox.height();
        painter.translate((size - logoBox.width() * scale) / 2, 0);
        painter.scale(scale, scale);
        painter.fillPath(logoPath(), logoColor());
    });
}

QIcon recordingStatusIcon() {
    return drawn([](QPainter &painter, double size) {
        drawInCircle(painter, size, Theme::dark().recording, [](QPainter &inner, double all) {
            inner.setBrush(Qt::white);
            const double side = all * 0.36;
            inner.drawRoundedRect(QRectF((all - side) / 2, (all - side) / 2, side, side), side / 5, side / 5);
        });
    });
}

QIcon uploadingStatusIcon() {
    return drawn([](QPainter &painter, double size) {
        drawInCircle(painter, size, Theme::light().accent, [](QPainter &inner, double all) {
            inner.setPen(QPen(Qt::white, all / 9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            const double middle = all / 2;
            const double reach = all * 0.2;
            inner.drawLine(QPointF(middle, middle + reach * 1.2), QPointF(middle, middle - reach * 1.2));
            inner.drawLine(QPointF(middle, middle - reach * 1.2),
                           QPointF(middle - reach, middle - reach * 0.2));
            inner.drawLine(QPointF(middle, middle - reach * 1.2),
                           QPointF(middle + reach, middle - reach * 0.2));
        });
    });
}

} // namespace vantrell
