// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ProgressLines.h"

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <mutex>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vantrell {

namespace {

/// A line that wrapped would not be found again.
std::string fitted(const std::string &line) {
    winsize size{};
    const int columns =
        ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1 : 79;
    QString text = QString::fromStdString(line);
    if (text.size() > columns)
        text = text.left(columns - 1) + QStringLiteral("…");
    return text.toStdString();
}

/// What stands at the bottom of the terminal, which other threads log to.
std::recursive_mutex terminal;
std::vector<std::string> shown;
QtMessageHandler logBelow = nullptr;

void erase() {
    // Up to the first line, and everything below it away.
    if (!shown.empty())
        std::fprintf(stderr, "\x1b[%zuA\r\x1b[J", shown.size());
}

void draw() {
    for (const std::string &line : shown)
        std::fprintf(stderr, "%s\n", fitted(line).c_str());
    std::fflush(stderr);
}

void logAbove(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    std::scoped_lock lock(terminal);
    erase();
    logBelow(type, context, message);
    draw();
}

} // namespace

ProgressLines::ProgressLines() : m_onTerminal(::isatty(STDERR_FILENO) == 1) {
    if (m_onTerminal)
        logBelow = qInstallMessageHandler(logAbove);
}

ProgressLines::~ProgressLines() {
    if (!m_onTerminal)
        return;
    clear();
    qInstallMessageHandler(logBelow);
}

void ProgressLines::show(const std::vector<std::string> &lines) {
    std::scoped_lock lock(terminal);
    if (!m_onTerminal || lines == shown)
        return;
    erase();
    shown = lines;
    draw();
}

void ProgressLines::clear() {
    show({});
}

} // namespace vantrell
