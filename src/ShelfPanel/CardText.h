// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Shelf/ShelfItem.h"

#include <QFont>
#include <QString>
#include <QStringList>

#include <chrono>

namespace vantrell {

/// What a card is called, fit for one line; that it was recovered after a crash is told apart from the name.
struct CardTitle {
    QString text;
    bool isRecovered = false;
};
CardTitle cardTitle(const ShelfItem &item);

/// "0:41", "12:05", "1:02:03".
QString lengthText(std::chrono::milliseconds length);

/// The text in at most so many lines of that width; what does not fit ends in "…".
QStringList wrappedText(const QString &text, const QFont &font, double width, int mostLines);

} // namespace vantrell
