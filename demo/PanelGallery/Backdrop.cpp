// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Backdrop.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>

namespace vantrell::gallery {

Backdrop::Backdrop(bool isLight)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::BypassWindowManagerHint), m_isLight(isLight) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setGeometry(QGuiApplication::primaryScreen()->geometry());
}

void Backdrop::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    QLinearGradient sky(rect().topLeft(), rect().bottomRight());
    sky.setColorAt(0, m_isLight ? QColor(0xdfe6ea) : QColor(0x27425f));
    sky.setColorAt(1, m_isLight ? QColor(0xe9dfe3) : QColor(0x5a3a48));
    painter.fillRect(rect(), sky);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_isLight ? QColor(0xffffff) : QColor(0x20262b));
    painter.drawRoundedRect(
        QRectF(rect()).adjusted(width() * 0.1, height() * 0.08, -width() * 0.25, -height() * 0.3), 10, 10);
    painter.setPen(m_isLight ? QColor(0x777777) : QColor(0x9aa3a8));
    painter.drawText(QPointF(width() * 0.1 + 24, height() * 0.08 + 40),
                     QStringLiteral("A still screen costs nothing."));
}

} // namespace vantrell::gallery
