// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QFont>
#include <QString>

class QPainter;
class QRectF;

namespace vantrell {

/// Sizes of type on panels, in points of the screen.
inline constexpr double labelSize = 14;
inline constexpr double secondLineSize = 12.5;
/// The text of a desktop on which nobody has made it larger, in points of the screen.
inline constexpr double usualTextPixels = 15;

/// How much larger than usual the desktop's text is, 1 to 1.6.
double textScale();

/// The desktop's font at that size; larger by as much as the desktop's own text is larger than usual.
QFont panelFont(double size, QFont::Weight weight = QFont::Medium);

/// How wide text is, and drawing it, with all digits equally wide: so that a running time does not tremble.
double tabularWidth(const QString &text, const QFont &font);
/// From the left edge of the rectangle, in its vertical middle, with the painter's pen.
void drawTabular(QPainter &painter, const QRectF &rect, const QString &text, const QFont &font);

/// What somebody else named, fit for one line: line breaks become spaces; control characters and marks that
/// turn the direction of what follows are left out.
QString oneLine(const QString &name);

} // namespace vantrell
