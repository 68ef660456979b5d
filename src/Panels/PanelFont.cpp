// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelFont.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <map>
#include <utility>

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

/// What the panels' fonts are made from. Matching a font costs more than drawing a word with it, and panels
/// ask at each picture.
struct FontBasis {
    /// As the application had them when this was made.
    QFont applicationFont;
    double resolution = 0;

    QFont font;
    double scale = 1;
    double pointsPerPixel = 0.75;
    std::map<std::pair<double, QFont::Weight>, QFont> made;
};

FontBasis makeBasis(const QFont &applicationFont, double resolution) {
    // On Wayland the application's font may be of a time before there was a screen, with that one's
    // resolution: what is measured with it is not as wide as what is drawn.
    const QImage present(1, 1, QImage::Format_Mono);
    FontBasis basis{
        .applicationFont = applicationFont, .resolution = resolution, .font = {applicationFont, &present}};
    const QFontInfo info(basis.font);
    constexpr double mostScale = 1.6;
    basis.scale = std::clamp(info.pixelSize() / usualTextPixels, 1.0, mostScale);
    if (basis.font.pointSizeF() > 0 && info.pixelSize() > 0)
        basis.pointsPerPixel = info.pointSizeF() / info.pixelSize();
    return basis;
}

FontBasis &fontBasis() {
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double resolution = screen ? screen->logicalDotsPerInchY() : 0;
    const QFont font = QApplication::font();
    // Never destroyed: fonts do not outlive the application, and statics do.
    static auto *basis = new FontBasis(makeBasis(font, resolution));
    if (basis->resolution != resolution || basis->applicationFont != font)
        *basis = makeBasis(font, resolution);
    return *basis;
}

} // namespace

double textScale() {
    return fontBasis().scale;
}

QFont panelFont(double size, QFont::Weight weight) {
    FontBasis &basis = fontBasis();
    const auto [known, isNew] = basis.made.try_emplace({size, weight}, basis.font);
    if (isNew) {
        // Pixel sizes are whole numbers; points are not.
        known->second.setPointSizeF(size * basis.scale * basis.pointsPerPixel);
        known->second.setWeight(weight);
    }
    return known->second;
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
