// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/Loupe.h"

#include "Overlay/OverlayColours.h"
#include "Panels/Theme.h"

#include <QPainter>
#include <QPainterPath>

namespace vantrell {

namespace {

constexpr double loupeSide = 128;
constexpr double loupeRadius = 14;
constexpr double loupeDistance = 24;
constexpr double loupeRim = 3;

} // namespace

QRectF Loupe::placed(const Point &pointer, const Rect &bounds) {
    const auto beside = [](double at, double limit) {
        return at + loupeDistance + loupeSide <= limit ? at + loupeDistance : at - loupeDistance - loupeSide;
    };
    return {beside(pointer.x, bounds.width), beside(pointer.y, bounds.height), loupeSide, loupeSide};
}

QRect Loupe::shownPixels() const {
    return {middle.x() - cells / 2, middle.y() - cells / 2, cells, cells};
}

void Loupe::draw(QPainter &painter) const {
    constexpr double cell = loupeSide / cells;
    const Theme &theme = Theme::dark();
    const QRectF inside = frame.adjusted(loupeRim, loupeRim, -loupeRim, -loupeRim);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath form;
    form.addRoundedRect(frame, loupeRadius, loupeRadius);
    painter.fillPath(form, theme.panel);
    QPainterPath window;
    window.addRoundedRect(inside, loupeRadius - loupeRim, loupeRadius - loupeRim);
    painter.setClipPath(window, Qt::IntersectClip);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(inside, Qt::black);

    const auto place = [&](const QRect &pixels) {
        const QPoint from = pixels.topLeft() - shownPixels().topLeft();
        return QRectF(frame.x() + from.x() * cell, frame.y() + from.y() * cell, pixels.width() * cell,
                      pixels.height() * cell);
    };
    const QRect shown = shownPixels().intersected(picture.rect().translated(pictureCorner));
    if (!shown.isEmpty())
        painter.drawImage(place(shown), picture, QRectF(shown.translated(-pictureCorner)));

    painter.setPen(Qt::NoPen);
    const QRectF selected = place(selection.intersected(shownPixels()));
    QPainterPath outside;
    outside.addRect(frame);
    outside.addRect(selected);
    outside.setFillRule(Qt::OddEvenFill);
    painter.fillPath(outside, overlayColours::dimming);

    // Dark and light lines together can be seen on any ground.
    for (int line = 1; line < cells; ++line) {
        const double at = line * cell;
        painter.fillRect(QRectF(frame.x() + at, frame.y(), 1, loupeSide), overlayColours::loupeGrid);
        painter.fillRect(QRectF(frame.x(), frame.y() + at, loupeSide, 1), overlayColours::loupeGrid);
    }
    painter.setPen(QPen(theme.accent, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(place(selection.intersected(shownPixels().adjusted(-1, -1, 1, 1))));
    painter.restore();
}

} // namespace vantrell
