// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Languages.h"

#include <QCoreApplication>

namespace vantrell {

std::unique_ptr<QTranslator> catalogueFor(const QLocale &locale) {
    for (const QString &wanted : locale.uiLanguages()) {
        const QString language = wanted.section(QLatin1Char('-'), 0, 0);
        if (language == QLatin1String("en") || language == QLatin1String("C"))
            return nullptr;
        for (const Catalogue &catalogue : catalogues()) {
            if (language != QLatin1String(catalogue.language))
                continue;
            auto translator = std::make_unique<QTranslator>();
            if (translator->load(catalogue.bytes, catalogue.size))
                return translator;
        }
    }
    return nullptr;
}

void installUsersLanguage() {
    if (auto translator = catalogueFor(QLocale())) {
        translator->setParent(QCoreApplication::instance());
        QCoreApplication::installTranslator(translator.release());
    }
}

} // namespace vantrell
