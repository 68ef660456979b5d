// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/DismissButton.h"

#include "Panels/DesktopLink.h"
#include "ShelfPanel/ShelfText.h"

#include <QPainter>

namespace vantrell {

DismissButton::DismissButton(QWidget *card) : PanelButton(shelfText("Dismiss"), card) {
    setFixedSize(diameter, diameter);
}

void DismissButton::setShown(bool shown) {
    if (m_isShown == shown)
        return;
    m_isShown = shown;
    update();
}

void DismissButton::paintEvent(QPaintEvent *) {
    if (!m_isShown)
        return;
    const Theme &theme = Theme::of(*this);
    QColor ground = theme.isLight ? QColor(0xffffff) : QColor(0x3a403d);
    if (prefersHighContrast())
        ground = theme.panel;
    else if (isDown() || underMouse())
        ground = theme.isLight ? ground.darker(isDown() ? 118 : 108) : ground.lighter(isDown() ? 160 : 130);
    QPainter painter(this);
    // Without a compositor the window is cut to the circle, and what the cut leaves must be the button's.
    if (!DesktopLink::instance().isComposited())
        painter.fillRect(rect(), ground);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF circle = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setBrush(ground);
    painter.setPen(hasFocus() ? QPen(theme.focusRing, 2) : QPen(theme.hairline, 1));
    painter.drawEllipse(hasFocus() ? circle.adjusted(0.5, 0.5, -0.5, -0.5) : circle);
    constexpr double symbol = 14;
    const double inset = (diameter - symbol) / 2;
    painter.drawPixmap(QPointF(inset, inset),
                       symbolPixmap(Symbol::close, theme.text, symbol, devicePixelRatioF()));
}

} // namespace vantrell
