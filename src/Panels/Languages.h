// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QLocale>
#include <QTranslator>

#include <memory>
#include <span>

namespace vantrell {

/// The texts of one language, compiled into the program.
struct Catalogue {
    /// "de".
    const char *language;
    const unsigned char *bytes;
    int size;
};

std::span<const Catalogue> catalogues();

/// The catalogue that suits the user's languages best, in their order. Null: English comes first, or nothing
/// suits.
std::unique_ptr<QTranslator> catalogueFor(const QLocale &locale);

/// From now on the application's texts are in the language of the environment's locale. Main thread, once.
void installUsersLanguage();

} // namespace vantrell
