// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Log.h"

#include "Support/LogTail.h"

#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace vantrell {

Q_LOGGING_CATEGORY(logApp, "app.vantrell.capture.app")
Q_LOGGING_CATEGORY(logAuth, "app.vantrell.capture.auth")
Q_LOGGING_CATEGORY(logCapture, "app.vantrell.capture.capture")
Q_LOGGING_CATEGORY(logUpload, "app.vantrell.capture.upload")
Q_LOGGING_CATEGORY(logAnalytics, "app.vantrell.capture.analytics")

namespace {

/// Who writes the lines: ours, or Qt's own, which reaches the journal.
QtMessageHandler writer = nullptr;

void keepAndWrite(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    const QByteArray line =
        QByteArray(context.category ? context.category : "default") + ": " + message.toUtf8();
    LogTail::add(line.constData());
    writer(type, context, message);
}

void writeToStandardError(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    const char *level = type == QtDebugMsg     ? "debug"
                        : type == QtInfoMsg    ? "info"
                        : type == QtWarningMsg ? "warning"
                                               : "error";
    char time[16] = "";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::strftime(time, sizeof time, "%H:%M:%S", &local);
    std::fprintf(stderr, "%s %s %s: %s\n", time, level, context.category ? context.category : "default",
                 qPrintable(message));
}

} // namespace

void installLogging() {
    struct stat journal{};
    const bool journalListens = ::stat("/run/systemd/journal/socket", &journal) == 0;
    // Qt's own handler reaches the journal when standard error is no terminal.
    writer = qInstallMessageHandler(keepAndWrite);
    if (!writer || ::isatty(STDERR_FILENO) == 1 || !journalListens)
        writer = writeToStandardError;
}

} // namespace vantrell
