// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/ActionButtons.h"

#include "Overlay/OverlayText.h"
#include "Overlay/QtGeometry.h"
#include "Panels/Icons.h"
#include "Panels/PanelFont.h"
#include "Panels/Theme.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace vantrell {

namespace {

constexpr double actionsPadding = 4;
constexpr double actionHeight = 44;
constexpr double actionSidePadding = 14;
constexpr double actionSymbolSide = 20;
constexpr double actionSymbolGap = 8;
constexpr double actionsRadius = 14;
constexpr double actionRadius = 10;
/// From the selection's edge.
constexpr double actionsDistance = 14;

QFont actionFont() {
    return panelFont(labelSize, QFont::DemiBold);
}

double widthOf(ActionButtons::Kind kind) {
    const double text = QFontMetricsF(actionFont()).horizontalAdvance(ActionButtons::labelOf(kind));
    return std::ceil(2 * actionSidePadding + actionSymbolSide + actionSymbolGap + text);
}

bool overlap(const Rect &a, const Rect &b) {
    return toQt(a).intersects(toQt(b));
}

} // namespace

QString ActionButtons::labelOf(Kind kind) {
    return kind == Kind::record ? overlayText("Record") : overlayText("Capture");
}

ActionButtons ActionButtons::placed(const Rect &selection, const Rect &bounds, const Rect &avoided) {
    const double captureWidth = widthOf(Kind::capture), recordWidth = widthOf(Kind::record);
    const double height =
        std::max(actionHeight, std::ceil(QFontMetricsF(actionFont()).height() + actionsPadding));
    const double width = captureWidth + recordWidth + 3 * actionsPadding,
                 panelHeight = height + 2 * actionsPadding;
    const double middle = std::round(selection.x + (selection.width - width) / 2);
    const double x =
        std::clamp(middle, actionsPadding, std::max(actionsPadding, bounds.width - width - actionsPadding));

    const auto at = [&](double y) { return Rect{x, std::round(y), width, panelHeight}; };
    const std::array candidates{
        at(selection.maxY() + actionsDistance), at(selection.maxY() - actionsDistance - panelHeight),
        at(selection.y - actionsDistance - panelHeight), at(selection.y + actionsDistance)};
    const auto free = std::ranges::find_if(
        candidates, [&](const Rect &place) { return contains(bounds, place) && !overlap(place, avoided); });

    ActionButtons buttons;
    buttons.panel = free != candidates.end() ? *free : candidates[1];
    if (free == candidates.end())
        buttons.panel.y =
            std::clamp(buttons.panel.y, actionsPadding, bounds.height - panelHeight - actionsPadding);
    const double top = buttons.panel.y + actionsPadding;
    const double first = buttons.panel.x + actionsPadding;
    if (QGuiApplication::isRightToLeft()) {
        buttons.recordButton = {first, top, recordWidth, height};
        buttons.captureButton = {first + recordWidth + actionsPadding, top, captureWidth, height};
    } else {
        buttons.captureButton = {first, top, captureWidth, height};
        buttons.recordButton = {first + captureWidth + actionsPadding, top, recordWidth, height};
    }
    return buttons;
}

void ActionButtons::draw(QPainter &painter, double scale) const {
    const Theme &theme = Theme::dark();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(toQt(panel), actionsRadius, actionsRadius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.hairline, 1));
    painter.drawRoundedRect(toQt(panel).adjusted(0.5, 0.5, -0.5, -0.5), actionsRadius, actionsRadius);

    for (const Kind kind : {Kind::capture, Kind::record}) {
        const bool isRecord = kind == Kind::record;
        const QRectF frame = toQt(isRecord ? recordButton : captureButton);
        const QColor text = isRecord ? theme.onRecording : theme.text;
        painter.setPen(Qt::NoPen);
        painter.setBrush(isRecord ? theme.recordingGround : theme.selected);
        painter.drawRoundedRect(frame, actionRadius, actionRadius);
        if (pressed == kind || hovered == kind) {
            painter.setBrush(pressed == kind ? theme.pressed : theme.hover);
            painter.drawRoundedRect(frame, actionRadius, actionRadius);
        }
        const bool isMirrored = QGuiApplication::isRightToLeft();
        const double symbolX = isMirrored ? frame.right() - actionSidePadding - actionSymbolSide
                                          : frame.left() + actionSidePadding;
        painter.drawPixmap(
            QPointF(symbolX, frame.center().y() - actionSymbolSide / 2),
            symbolPixmap(isRecord ? Symbol::record : Symbol::still, text, actionSymbolSide, scale));
        const double taken = actionSidePadding + actionSymbolSide + actionSymbolGap;
        painter.setPen(text);
        painter.setFont(actionFont());
        painter.drawText(frame.adjusted(isMirrored ? actionSidePadding : taken, 0,
                                        isMirrored ? -taken : -actionSidePadding, 0),
                         Qt::AlignVCenter | (isMirrored ? Qt::AlignRight : Qt::AlignLeft) |
                             Qt::TextSingleLine | Qt::TextDontClip,
                         labelOf(kind));
    }
}

} // namespace vantrell
