// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelFont.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace vantrell {

namespace {

double digitWidth(const QFontMetricsF &metrics) {
    double widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    return widest;
}

/// Turns what follows around, or hides in it.
bool isDirectionMark(QChar character) {
    const char16_t code = character.unicode();
    return code == 0x200b || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
           (code >= 0x2060 && code <= 0x2069) || code == 0xfeff || code == 0x061c;
}

} // namespace

QFont panelFont(double size, QFont::Weight weight) {
    constexpr double usualPixels = 15;
    constexpr double most = 1.6;
    QFont font = QApplication::font();
    const double larger = std::clamp(QFontInfo(font).pixelSize() / usualPixels, 1.0, most);
    // Pixel sizes are whole numbers; points are not.
    font.setPointSizeF(font.pointSizeF() > 0 && QFontInfo(font).pixelSize() > 0
                           ? size * larger * QFontInfo(font).pointSizeF() / QFontInfo(font).pixelSize()
                           : size * larger * 0.75);
    font.setWeight(weight);
    return font;
}

double tabularWidth(const QString &text, const QFont &font) {
    const QFontMetricsF metrics(font);
    const double digit = digitWidth(metrics);
    double width = 0;
    for (const QChar character : text)
        width += character.isDigit() ? digit : metrics.horizontalAdvance(character);
    return width;
}

void drawTabular(QPainter &painter, const QRectF &rect, const QString &text, const QFont &font) {
    const QFontMetricsF metrics(font);
    const double digit = digitWidth(metrics);
    const double baseline = rect.center().y() + metrics.capHeight() / 2;
    painter.setFont(font);
    double x = rect.left();
    for (const QChar character : text) {
        const double own = metrics.horizontalAdvance(character);
        const double width = character.isDigit() ? digit : own;
        painter.drawText(QPointF(x + (width - own) / 2, baseline), QString(character));
        x += width;
    }
}

QString oneLine(const QString &name) {
    QString line;
    line.reserve(name.size());
    for (const QChar character : name) {
        if (character.isSpace())
            line += QLatin1Char(' ');
        else if (character.category() != QChar::Other_Control && !isDirectionMark(character))
            line += character;
    }
    return line.simplified();
}

} // namespace vantrell
