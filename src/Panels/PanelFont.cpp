// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelFont.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImage>
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

/// A digit, in a cell as wide as the widest one, or what lies between digits.
struct TabularPiece {
    QString text;
    double width = 0;
    double cell = 0;
};

/// Some of it, at least.
bool isReadFromRight(const QString &text) {
    return std::ranges::any_of(text, [](QChar character) {
        return character.direction() == QChar::DirR || character.direction() == QChar::DirAL;
    });
}

/// Letters stay together, for marks, joined letters and characters of two parts; text that is read from the
/// right stays whole.
std::vector<TabularPiece> tabularPieces(const QString &text, const QFontMetricsF &metrics) {
    const bool isWhole = isReadFromRight(text);
    const double digit = digitWidth(metrics);
    std::vector<TabularPiece> pieces;
    const auto add = [&](const QString &part, bool isDigit) {
        const double width = metrics.horizontalAdvance(part);
        pieces.push_back({part, width, isDigit ? digit : width});
    };
    for (qsizetype at = 0; at < text.size();) {
        qsizetype end = at + 1;
        const bool isDigit = !isWhole && text[at].isDigit();
        while (!isDigit && end < text.size() && (isWhole || !text[end].isDigit()))
            ++end;
        add(text.mid(at, end - at), isDigit);
        at = end;
    }
    return pieces;
}

/// On Wayland the application's font may be of a time before there was a screen, with that one's resolution:
/// what is measured with it is not as wide as what is drawn.
QFont desktopFont() {
    const QImage present(1, 1, QImage::Format_Mono);
    return {QApplication::font(), &present};
}

} // namespace

double textScale() {
    constexpr double most = 1.6;
    return std::clamp(QFontInfo(desktopFont()).pixelSize() / usualTextPixels, 1.0, most);
}

QFont panelFont(double size, QFont::Weight weight) {
    QFont font = desktopFont();
    const double larger = textScale();
    // Pixel sizes are whole numbers; points are not.
    font.setPointSizeF(font.pointSizeF() > 0 && QFontInfo(font).pixelSize() > 0
                           ? size * larger * QFontInfo(font).pointSizeF() / QFontInfo(font).pixelSize()
                           : size * larger * 0.75);
    font.setWeight(weight);
    return font;
}

double tabularWidth(const QString &text, const QFont &font) {
    double width = 0;
    for (const TabularPiece &piece : tabularPieces(text, QFontMetricsF(font)))
        width += piece.cell;
    return width;
}

void drawTabular(QPainter &painter, const QRectF &rect, const QString &text, const QFont &font) {
    const QFontMetricsF metrics(font);
    const double baseline = rect.center().y() + metrics.capHeight() / 2;
    painter.setFont(font);
    const Qt::LayoutDirection before = painter.layoutDirection();
    // Also among what is read from the right: left to the painter, spaces and signs would change sides.
    painter.setLayoutDirection(isReadFromRight(text) ? Qt::LayoutDirectionAuto : Qt::LeftToRight);
    double x = rect.left();
    for (const TabularPiece &piece : tabularPieces(text, metrics)) {
        painter.drawText(QPointF(x + (piece.cell - piece.width) / 2, baseline), piece.text);
        x += piece.cell;
    }
    painter.setLayoutDirection(before);
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
