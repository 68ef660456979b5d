// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelLabel.h"

#include "Panels/PanelAccessibility.h"
#include "Panels/PanelFont.h"
#include "Panels/Theme.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QPainter>

#include <cmath>
#include <utility>

namespace vantrell {

PanelLabel::PanelLabel(const QFont &font, Ink ink, QWidget *parent)
    : QWidget(parent), m_font(font), m_ink(std::move(ink)) {
    installPanelAccessibility();
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PanelLabel::setText(const QString &text) {
    if (m_text == text)
        return;
    const QSize before = sizeHint();
    m_text = text;
    setAccessibleName(text);
    if (sizeHint() != before)
        updateGeometry();
    update();
}

QSize PanelLabel::sizeHint() const {
    return {int(std::ceil(tabularWidth(m_text, m_font))), int(std::ceil(QFontMetricsF(m_font).height()))};
}

void PanelLabel::paintEvent(QPaintEvent *) {
    const Theme &theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_ink ? m_ink(theme) : theme.text);
    drawTabular(painter, rect(), m_text, m_font);
}

} // namespace vantrell
