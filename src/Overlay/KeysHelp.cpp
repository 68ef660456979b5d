// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/KeysHelp.h"

#include "Overlay/OverlayText.h"
#include "Panels/PanelFont.h"
#include "Panels/Theme.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr double helpPadding = 18;
constexpr double helpColumnGap = 24;
constexpr double helpRowGap = 8;
constexpr double helpRadius = 14;

QFont keysFont() {
    return panelFont(secondLineSize, QFont::DemiBold);
}
QFont meaningFont() {
    return panelFont(secondLineSize);
}

double widest(const std::vector<KeysHelp::Row> &rows, const QFont &font, QString KeysHelp::Row::*column) {
    const QFontMetricsF metrics(font);
    double width = 0;
    for (const KeysHelp::Row &row : rows)
        width = std::max(width, metrics.horizontalAdvance(row.*column));
    return std::ceil(width);
}

double rowHeight() {
    return std::ceil(QFontMetricsF(meaningFont()).height());
}

} // namespace

KeysHelp KeysHelp::of(ToolMode tool) {
    KeysHelp help;
    const auto add = [&](const QString &keys, const QString &meaning) {
        help.rows.push_back({keys, meaning});
    };
    add(overlayText("Enter"), overlayText("Record"));
    add(overlayText("Ctrl+Enter"), overlayText("Take a still"));
    if (tool == ToolMode::area) {
        add(overlayText("Arrows"), overlayText("Move by 1, with Shift by 10"));
        add(overlayText("Alt+Arrows"), overlayText("Resize by 1, with Shift by 10"));
        add(overlayText("Ctrl+A"), overlayText("Select the whole screen"));
        add(overlayText("Shift"), overlayText("Keep the proportions while dragging"));
        add(overlayText("Alt"), overlayText("Drag from the centre"));
        add(overlayText("Space"), overlayText("Move what is being drawn"));
    } else {
        add(overlayText("Tab"),
            tool == ToolMode::window ? overlayText("Next window") : overlayText("Next screen"));
        add(overlayText("Ctrl+Click"), overlayText("Take a still"));
    }
    add(QStringLiteral("1 2 3"), overlayText("Area, window, screen"));
    add(QStringLiteral("F6"), overlayText("Go to the capture bar"));
    add(overlayText("Escape"), overlayText("Close"));
    const auto count = double(help.rows.size());
    help.frame = {0, 0,
                  2 * helpPadding + widest(help.rows, keysFont(), &Row::keys) + helpColumnGap +
                      widest(help.rows, meaningFont(), &Row::meaning),
                  2 * helpPadding + count * rowHeight() + (count - 1) * helpRowGap};
    return help;
}

void KeysHelp::draw(QPainter &painter) const {
    const Theme &theme = Theme::dark();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(frame, helpRadius, helpRadius);

    const QRectF inside = frame.adjusted(helpPadding, helpPadding, -helpPadding, -helpPadding);
    const double keysWidth = widest(rows, keysFont(), &Row::keys);
    const bool isMirrored = QGuiApplication::isRightToLeft();
    const int side = isMirrored ? Qt::AlignRight : Qt::AlignLeft;
    double y = inside.top();
    for (const Row &row : rows) {
        const QRectF line(inside.left(), y, inside.width(), rowHeight());
        painter.setFont(keysFont());
        painter.setPen(theme.text);
        painter.drawText(line, side | Qt::AlignVCenter | Qt::TextDontClip, row.keys);
        painter.setFont(meaningFont());
        painter.setPen(theme.quietText);
        const double indent = keysWidth + helpColumnGap;
        painter.drawText(line.adjusted(isMirrored ? 0 : indent, 0, isMirrored ? -indent : 0, 0),
                         side | Qt::AlignVCenter | Qt::TextDontClip, row.meaning);
        y += rowHeight() + helpRowGap;
    }
}

} // namespace vantrell
