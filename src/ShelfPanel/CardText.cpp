// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/CardText.h"

#include "Panels/PanelFont.h"
#include "Panels/Sentence.h"

#include <QFontMetricsF>
#include <QTextLayout>

namespace vantrell {

CardTitle cardTitle(const ShelfItem &item) {
    const QString name = oneLine(QString::fromStdString(item.title()));
    const QString suffix = QString::fromUtf8(recoveredSuffix.data(), qsizetype(recoveredSuffix.size()));
    if (name.size() > suffix.size() && name.endsWith(suffix))
        return {inUsersLanguage(name.chopped(suffix.size())), true};
    return {inUsersLanguage(name), false};
}

QString lengthText(std::chrono::milliseconds length) {
    const auto seconds = std::chrono::round<std::chrono::seconds>(length).count();
    const auto twoDigits = [](long long number) { return QString::number(number).rightJustified(2, '0'); };
    const long long minutes = seconds / 60;
    if (minutes < 60)
        return QString::number(minutes) + ':' + twoDigits(seconds % 60);
    return QString::number(minutes / 60) + ':' + twoDigits(minutes % 60) + ':' + twoDigits(seconds % 60);
}

QStringList wrappedText(const QString &text, const QFont &font, double width, int mostLines) {
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QStringList lines;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (lines.size() + 1 == mostLines) {
            lines += QFontMetricsF(font).elidedText(text.mid(line.textStart()), Qt::ElideRight, width);
            break;
        }
        lines += text.mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return lines;
}

} // namespace vantrell
