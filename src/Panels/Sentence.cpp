// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Sentence.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <vector>

namespace vantrell {

namespace {

constexpr const char *context = "Sentences";

/// A sentence in which something is put in, and how to find out what.
struct Pattern {
    const char *english;
    QRegularExpression expression;
};

std::vector<Pattern> makePatterns() {
    std::vector<Pattern> patterns;
    for (const char *const english : shownSentences()) {
        QString text = QRegularExpression::escape(QString::fromUtf8(english));
        const QString plain = text;
        text.replace(QLatin1String("\\%1"), QLatin1String("(?<p1>.+)"));
        text.replace(QLatin1String("\\%2"), QLatin1String("(?<p2>.+)"));
        text.replace(QLatin1String("\\%n"), QLatin1String("(?<n>[0-9]+)"));
        if (text != plain)
            patterns.push_back({english, QRegularExpression(QRegularExpression::anchoredPattern(text),
                                                            QRegularExpression::DotMatchesEverythingOption)});
    }
    return patterns;
}

/// Named groups that a pattern does not have are empty.
QString group(const QRegularExpression &expression, const QRegularExpressionMatch &match, const char *name) {
    const QString wanted = QString::fromLatin1(name);
    return expression.namedCaptureGroups().contains(wanted) ? match.captured(wanted) : QString();
}

} // namespace

QString inUsersLanguage(const QString &english) {
    if (english.isEmpty())
        return english;
    const QByteArray key = english.toUtf8();
    const QString whole = QCoreApplication::translate(context, key.constData());
    if (whole != english)
        return whole;
    static const std::vector<Pattern> patterns = makePatterns();
    for (const Pattern &pattern : patterns) {
        const QRegularExpressionMatch match = pattern.expression.match(english);
        if (!match.hasMatch())
            continue;
        const QString number = group(pattern.expression, match, "n");
        QString translated = QCoreApplication::translate(context, pattern.english, nullptr,
                                                         number.isEmpty() ? -1 : number.toInt());
        if (translated == QString::fromUtf8(pattern.english))
            return english;
        // What was put in may be a sentence itself.
        const QString first = inUsersLanguage(group(pattern.expression, match, "p1"));
        const QString second = inUsersLanguage(group(pattern.expression, match, "p2"));
        if (second.isEmpty())
            return first.isEmpty() ? translated : translated.arg(first);
        return translated.arg(first, second);
    }
    return english;
}

std::string inUsersLanguage(const std::string &english) {
    return inUsersLanguage(QString::fromStdString(english)).toStdString();
}

} // namespace vantrell
