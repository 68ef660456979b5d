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

constexpr double buttonsPadding = 4;
constexpr double buttonHeight = 44;
constexpr double buttonSidePadding = 14;
constexpr double symbolSide = 20;
constexpr double symbolGap = 8;
constexpr double buttonsPanelRadius = 14;
constexpr double buttonRadius = 10;
/// From the selection's edge.
constexpr double buttonsDistance = 14;

QFont buttonFont() {
    return panelFont(labelSize, QFont::DemiBold);
}

double widthOf(ActionButtons::Kind kind) {
    const double text = QFontMetricsF(buttonFont()).horizontalAdvance(ActionButtons::labelOf(kind));
    return std::ceil(2 * buttonSidePadding + symbolSide + symbolGap + text);
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
        std::max(buttonHeight, std::ceil(QFontMetricsF(buttonFont()).height() + buttonsPadding));
    const double width = captureWidth + recordWidth + 3 * buttonsPadding,
                 panelHeight = height + 2 * buttonsPadding;
    const double middle = std::round(selection.x + (selection.width - width) / 2);
    const double x =
        std::clamp(middle, buttonsPadding, std::max(buttonsPadding, bounds.width - width - buttonsPadding));

    const auto at = [&](double y) { return Rect{x, std::round(y), width, panelHeight}; };
    const std::array candidates{
        at(selection.maxY() + buttonsDistance), at(selection.maxY() - buttonsDistance - panelHeight),
        at(selection.y - buttonsDistance - panelHeight), at(selection.y + buttonsDistance)};
    const auto free = std::ranges::find_if(
        candidates, [&](const Rect &place) { return contains(bounds, place) && !overlap(place, avoided); });

    ActionButtons buttons;
    buttons.panel = free != candidates.end() ? *free : candidates[1];
    if (free == candidates.end())
        buttons.panel.y =
            std::clamp(buttons.panel.y, buttonsPadding, bounds.height - panelHeight - buttonsPadding);
    const double top = buttons.panel.y + buttonsPadding;
    const double first = buttons.panel.x + buttonsPadding;
    if (QGuiApplication::isRightToLeft()) {
        buttons.recordButton = {first, top, recordWidth, height};
        buttons.captureButton = {first + recordWidth + buttonsPadding, top, captureWidth, height};
    } else {
        buttons.captureButton = {first, top, captureWidth, height};
        buttons.recordButton = {first + captureWidth + buttonsPadding, top, recordWidth, height};
    }
    return buttons;
}

void ActionButtons::draw(QPainter &painter, double scale) const {
    const Theme &theme = Theme::dark();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(toQt(panel), buttonsPanelRadius, buttonsPanelRadius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.hairline, 1));
    painter.drawRoundedRect(toQt(panel).adjusted(0.5, 0.5, -0.5, -0.5), buttonsPanelRadius,
                            buttonsPanelRadius);

    for (const Kind kind : {Kind::capture, Kind::record}) {
        const bool isRecord = kind == Kind::record;
        const QRectF frame = toQt(isRecord ? recordButton : captureButton);
        const QColor text = isRecord ? theme.onRecording : theme.text;
        painter.setPen(Qt::NoPen);
        painter.setBrush(isRecord ? theme.recordingGround : theme.selected);
        painter.drawRoundedRect(frame, buttonRadius, buttonRadius);
        if (pressed == kind || hovered == kind) {
            painter.setBrush(pressed == kind ? theme.pressed : theme.hover);
            painter.drawRoundedRect(frame, buttonRadius, buttonRadius);
        }
        const bool isMirrored = QGuiApplication::isRightToLeft();
        const double symbolX =
            isMirrored ? frame.right() - buttonSidePadding - symbolSide : frame.left() + buttonSidePadding;
        painter.drawPixmap(QPointF(symbolX, frame.center().y() - symbolSide / 2),
                           symbolPixmap(isRecord ? Symbol::record : Symbol::still, text, symbolSide, scale));
        const double taken = buttonSidePadding + symbolSide + symbolGap;
        painter.setPen(text);
        painter.setFont(buttonFont());
        painter.drawText(frame.adjusted(isMirrored ? buttonSidePadding : taken, 0,
                                        isMirrored ? -taken : -buttonSidePadding, 0),
                         Qt::AlignVCenter | (isMirrored ? Qt::AlignRight : Qt::AlignLeft) |
                             Qt::TextSingleLine | Qt::TextDontClip,
                         labelOf(kind));
    }
}

} // namespace vantrell
