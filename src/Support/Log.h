// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QLoggingCategory>

namespace vantrell {

/// The five categories, "app.vantrell.capture.<name>". Messages are short and lower case. Secrets, keys,
/// signed addresses and window titles are never logged.
Q_DECLARE_LOGGING_CATEGORY(logApp)
Q_DECLARE_LOGGING_CATEGORY(logAuth)
Q_DECLARE_LOGGING_CATEGORY(logCapture)
Q_DECLARE_LOGGING_CATEGORY(logUpload)
Q_DECLARE_LOGGING_CATEGORY(logAnalytics)

/// Sends log lines to standard error when it is a terminal or when there is no journal to reach, and to the
/// journal otherwise. Called once, early in main.
void installLogging();

} // namespace vantrell
