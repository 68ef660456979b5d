// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/CardFace.h"

#include "Panels/PanelShape.h"
#include "ShelfPanel/ShelfCard.h"

#include <QPainter>

namespace vantrell {

namespace {

constexpr QPoint toBody(panelShadowReach, panelShadowReach);

} // namespace

CardFace::CardFace(const Theme &theme, double scale, bool isBlended) {
    const QRectF body(toBody, QSizeF(ShelfCard::bodyWidth, ShelfCard::bodyHeight));
    const QSize size(ShelfCard::bodyWidth + 2 * panelShadowReach,
                     ShelfCard::bodyHeight + 2 * panelShadowReach);
    m_ground = PanelShape{size, body, ShelfCard::cornerRadius, scale}.picture(theme, isBlended);
    if (!isBlended)
        return;
    m_shadow = QPixmap(m_ground.size());
    m_shadow.setDevicePixelRatio(scale);
    m_shadow.fill(Qt::transparent);
    QPainter shadow(&m_shadow);
    vantrell::drawShadow(shadow, size, body, ShelfCard::cornerRadius, scale);
    // Shadows are shown below all cards: the ground's picture keeps what lies inside its form.
    QPainterPath around;
    around.addRect(QRectF(QPointF(0, 0), QSizeF(size)));
    QPainter ground(&m_ground);
    ground.setRenderHint(QPainter::Antialiasing);
    ground.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    ground.fillPath(around - roundedPath(body, ShelfCard::cornerRadius), Qt::black);
}

void CardFace::drawShadow(QPainter &painter, const QPoint &body) const {
    if (!m_shadow.isNull())
        painter.drawPixmap(body - toBody, m_shadow);
}

void CardFace::drawGround(QPainter &painter, const QPoint &body) const {
    if (!m_shadow.isNull())
        return painter.drawPixmap(body - toBody, m_ground);
    // The window's shape cuts the ground, which reaches over the edges of the cards above and below.
    constexpr int reach = 2;
    const QSize size(ShelfCard::bodyWidth, ShelfCard::bodyHeight);
    painter.save();
    painter.setClipRect(QRect(body, size).adjusted(-reach, -reach, reach, reach), Qt::IntersectClip);
    painter.drawPixmap(body - toBody, m_ground);
    painter.restore();
}

} // namespace vantrell
