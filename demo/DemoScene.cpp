// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "DemoScene.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace vantrell {

namespace {

const QColor paper(0xf7, 0xf5, 0xf0);
const QColor ink(0x22, 0x2a, 0x35);
const QColor accent(0xe2, 0x57, 0x3b);
const QColor calm(0x2f, 0x6f, 0x8f);

} // namespace

DemoScene::DemoScene() {
    setTitle("Demo");
    resize(960, 600);
    setPosition(160, 100);
    m_elapsed.start();
    m_frame.setTimerType(Qt::PreciseTimer);
    connect(&m_frame, &QTimer::timeout, this, [this] { update(); });
    m_frame.start(16);
}

void DemoScene::paintEvent(QPaintEvent *) {
    const double seconds = double(m_elapsed.elapsed()) / 1000;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRect(QPoint(), size()), paper);

    QFont heading("sans-serif", 26);
    heading.setWeight(QFont::DemiBold);
    painter.setFont(heading);
    painter.setPen(ink);
    painter.drawText(QPointF(48, 78), "Vantrell Capture");
    painter.setFont(QFont("monospace", 20));
    painter.setPen(calm);
    const QString time = QString("%1.%2 s")
                             .arg(int(seconds), 3, 10, QChar('0'))
                             .arg(int(seconds * 100) % 100, 2, 10, QChar('0'));
    painter.drawText(QRectF(width() - 248, 48, 200, 40), Qt::AlignRight | Qt::AlignVCenter, time);

    paintChart(painter, QRectF(48, 120, width() - 96, height() - 320), seconds);
    paintBall(painter, QRectF(48, height() - 180, width() - 96, 132), seconds);
}

void DemoScene::paintChart(QPainter &painter, const QRectF &area, double seconds) const {
    painter.setPen(QPen(QColor(0, 0, 0, 24), 1));
    for (int line = 0; line <= 4; ++line) {
        const double y = area.top() + area.height() * line / 4;
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    }
    QPainterPath curve;
    const double shown = std::min(seconds / 6, 1.0);
    for (double x = 0; x <= shown; x += 0.004) {
        const double value = 0.5 + 0.3 * std::sin(x * 9 + seconds * 0.6) + 0.12 * std::sin(x * 23);
        const QPointF point(area.left() + x * area.width(), area.bottom() - value * area.height());
        if (curve.elementCount() == 0)
            curve.moveTo(point);
        else
            curve.lineTo(point);
    }
    painter.setPen(QPen(calm, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(curve);
}

void DemoScene::paintBall(QPainter &painter, const QRectF &area, double seconds) const {
    const double radius = 26;
    const double travel = area.width() - 2 * radius;
    const double phase = std::fmod(seconds * 0.35, 2.0);
    const double x = area.left() + radius + travel * (phase < 1 ? phase : 2 - phase);
    const double bounce = std::abs(std::sin(seconds * 3.2));
    const double y = area.bottom() - radius - bounce * (area.height() - 2 * radius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, int(40 * (1.2 - bounce))));
    painter.drawEllipse(QPointF(x, area.bottom() - 2), radius * (1.1 - 0.4 * bounce), 5);
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(x, y), radius, radius);
}

} // namespace vantrell
