// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TextAudit.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QSvgGenerator>
#include <QWidget>
#include <QXmlStreamReader>

#include <algorithm>

namespace vantrell::gallery {

namespace {

/// Drawn as a picture of lines and texts, of which the texts are read.
QStringList paintedTexts(QWidget &window) {
    QBuffer picture;
    picture.open(QIODevice::ReadWrite);
    QSvgGenerator pen;
    pen.setOutputDevice(&picture);
    pen.setSize(window.size());
    window.render(&pen);
    picture.seek(0);
    QStringList texts;
    QXmlStreamReader read(&picture);
    while (!read.atEnd())
        if (read.readNext() == QXmlStreamReader::StartElement && read.name() == QLatin1String("text"))
            texts.append(read.readElementText().trimmed());
    return texts;
}

/// Key names, figures and file sizes are the same in all languages.
bool isWord(const QString &text) {
    static const QRegularExpression letters(QStringLiteral("\\p{L}\\p{Ll}"));
    return letters.match(text).hasMatch();
}

} // namespace

QStringList textsOf(QWidget &window) {
    QStringList texts = paintedTexts(window);
    QList<QWidget *> widgets = window.findChildren<QWidget *>();
    widgets.append(&window);
    for (const QWidget *widget : widgets)
        if (widget->isVisible())
            texts << widget->accessibleName() << widget->accessibleDescription() << widget->toolTip();
    return texts;
}

QStringList faultyTexts(const QStringList &texts, const QStringList &names) {
    const auto isShortened = [&names](const QString &text) {
        const QString begin = text.section(QChar(0x2026), 0, 0);
        return begin != text && std::ranges::any_of(names, [&](const QString &name) {
                   return name.startsWith(begin.trimmed()) && begin.size() > 1;
               });
    };
    QStringList rest;
    for (QString text : texts) {
        if (isShortened(text))
            continue;
        for (const QString &name : names)
            text.remove(name);
        rest.append(text);
    }
    // A sentence may be painted in several lines.
    QString all = rest.join(QLatin1Char('\n'));
    static const QRegularExpression translated(QStringLiteral("\\[[^\\[\\]]*\\]"));
    QStringList faulty;
    for (auto cut = translated.globalMatch(all); cut.hasNext();)
        if (const QString text = cut.next().captured(); text.contains(QChar(0x2026)))
            faulty.append(text.simplified());
    while (all.contains(translated))
        all.remove(translated);
    for (const QString &text : all.split(QLatin1Char('\n')))
        if (isWord(text))
            faulty.append(text);
    return faulty;
}

} // namespace vantrell::gallery
