// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/CardTip.h"

#include "Panels/PanelFont.h"
#include "ShelfPanel/CardText.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr int mostWidth = 320;
constexpr int mostLines = 12;
constexpr int padding = 12;
constexpr int distance = 10;

QFont tipFont() {
    return panelFont(secondLineSize, QFont::Normal);
}

} // namespace

void CardTip::showBeside(const QRect &card, const QStringList &paragraphs, bool isOnLight) {
    m_lines.clear();
    for (const QString &paragraph : paragraphs)
        m_lines += wrappedText(paragraph, tipFont(), mostWidth, mostLines);
    const QFontMetricsF metrics(tipFont());
    double width = 0;
    for (const QString &line : m_lines)
        width = std::max(width, metrics.horizontalAdvance(line));
    setOnLightBackdrop(isOnLight);
    resizePanel({int(std::ceil(width)) + 2 * padding,
                 int(std::ceil(metrics.height() * double(m_lines.size()))) + padding});
    const QSize size = panelRect().size();
    placePanel({card.left() - distance - size.width(), card.center().y() - size.height() / 2});
    update();
    showPanel();
}

void CardTip::paintEvent(QPaintEvent *event) {
    FloatingPanel::paintEvent(event);
    QPainter painter(this);
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    painter.setPen(theme().text);
    painter.setFont(tipFont());
    const double height = QFontMetricsF(tipFont()).height();
    QRectF line = QRectF(panelRect()).adjusted(padding, padding / 2.0, -padding, 0);
    line.setHeight(height);
    const int side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    for (const QString &text : m_lines) {
        painter.drawText(line, side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine, text);
        line.translate(0, height);
    }
}

} // namespace vantrell
