// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayLabel.h"

#include "Panels/PanelFont.h"
#include "Panels/Theme.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr double labelSidePadding = 12;
constexpr double labelVerticalPadding = 6;
constexpr double labelGap = 8;
constexpr double labelIconSide = 20;

QFont labelFont() {
    return panelFont(secondLineSize);
}

} // namespace

OverlayLabel OverlayLabel::sized(const QString &text, double mostWide, const QString &quietText,
                                 const QImage &icon) {
    const QFontMetricsF metrics(labelFont());
    OverlayLabel label{text, quietText, icon, {}};
    double fixed = 2 * labelSidePadding + (icon.isNull() ? 0 : labelIconSide + labelGap);
    // The quiet part gives way first.
    const double wanted = metrics.horizontalAdvance(text);
    if (!quietText.isEmpty()) {
        const double most = std::max(mostWide / 3, mostWide - fixed - labelGap - wanted);
        label.quietText = metrics.elidedText(quietText, Qt::ElideMiddle, std::max(0.0, most));
        fixed += labelGap + metrics.horizontalAdvance(label.quietText);
    }
    label.text = metrics.elidedText(text, Qt::ElideMiddle, std::max(0.0, mostWide - fixed));
    const double height =
        std::max(metrics.height(), icon.isNull() ? 0 : labelIconSide) + 2 * labelVerticalPadding;
    label.frame = {0, 0, std::ceil(tabularWidth(label.text, labelFont()) + fixed), std::ceil(height)};
    return label;
}

void OverlayLabel::draw(QPainter &painter) const {
    const Theme &theme = Theme::dark();
    const bool isMirrored = QGuiApplication::isRightToLeft();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(frame, frame.height() / 2, frame.height() / 2);

    QRectF rest = frame.adjusted(labelSidePadding, 0, -labelSidePadding, 0);
    const auto take = [&](double width) {
        const QRectF part(isMirrored ? rest.right() - width : rest.left(), rest.top(), width, rest.height());
        rest.adjust(isMirrored ? 0 : width + labelGap, 0, isMirrored ? -width - labelGap : 0, 0);
        return part;
    };
    const QFontMetricsF metrics(labelFont());
    if (!icon.isNull()) {
        const QRectF place = take(labelIconSide);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(
            QRectF(place.left(), place.center().y() - labelIconSide / 2, labelIconSide, labelIconSide), icon);
    }
    painter.setPen(theme.text);
    drawTabular(painter, take(tabularWidth(text, labelFont())), text, labelFont());
    if (!quietText.isEmpty()) {
        painter.setPen(theme.quietText);
        drawTabular(painter, take(metrics.horizontalAdvance(quietText)), quietText, labelFont());
    }
}

} // namespace vantrell
