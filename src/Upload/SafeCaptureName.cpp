// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/SafeCaptureName.h"

#include <QString>
#include <QTextBoundaryFinder>

namespace vantrell {

std::optional<std::string> safeCaptureName(std::string_view name) {
    constexpr qsizetype mostUnits = 200;
    QString text = QString::fromUtf8(name.data(), qsizetype(name.size())).trimmed();
    if (text.size() > mostUnits) {
        // A character is what the user sees as one: cutting a family emoji in half shows another family.
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
        finder.setPosition(mostUnits);
        const qsizetype end = finder.isAtBoundary() ? mostUnits : finder.toPreviousBoundary();
        text.truncate(end > 0 ? end : 0);
    }
    return text.isEmpty() ? std::nullopt : std::optional(text.toStdString());
}

} // namespace vantrell
