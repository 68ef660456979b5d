// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PseudoLanguage.h"

#include "Panels/Languages.h"

namespace vantrell {

namespace {

/// The letter with a mark above or below it, of the same height as the marks of real languages.
QString accented(QChar letter) {
    static const QString plain = QStringLiteral("AEIOUaeiouyncs");
    static const QString marked = QStringLiteral("ÅÉÎÖÜåéîöüýñçš");
    const qsizetype at = plain.indexOf(letter);
    return at < 0 ? QString(letter) : QString(marked[at]);
}

bool isVowel(QChar letter) {
    return QStringLiteral("AEIOUaeiou").contains(letter);
}

} // namespace

PseudoLanguage::PseudoLanguage() : m_known(catalogueFor(QLocale(QStringLiteral("de_DE")))) {}

QString PseudoLanguage::translate(const char *context, const char *source, const char *disambiguation,
                                  int n) const {
    if (!m_known || m_known->translate(context, source, disambiguation, n).isEmpty())
        return {};
    const QString english = QString::fromUtf8(source);
    QString text;
    for (qsizetype at = 0; at < english.size(); ++at) {
        // What is put in keeps its place.
        if (english[at] == QLatin1Char('%') && at + 1 < english.size()) {
            text += english.mid(at++, 2);
            continue;
        }
        // In this language the mark belongs to texts that were cut.
        if (english[at] == QChar(0x2026)) {
            text += QLatin1String("...");
            continue;
        }
        text += accented(english[at]);
        // Other languages are longer by up to two fifths, word by word.
        if (isVowel(english[at]))
            text += accented(english[at]);
    }
    return QLatin1Char('[') + text + QLatin1Char(']');
}

} // namespace vantrell
