// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QString>

#include <span>
#include <string>

namespace vantrell {

/// A sentence in the user's language. Menus, alerts, cards and notifications are made in English, which is
/// also what logs, the bus and commands say, and are translated here when they are shown. One that the
/// catalogue does not know stays as it is. Main thread.
QString inUsersLanguage(const QString &english);
std::string inUsersLanguage(const std::string &english);

/// The sentences that are shown, with %1 and %2 for what is put in: the catalogues' context "Sentences".
std::span<const char *const> shownSentences();

} // namespace vantrell
