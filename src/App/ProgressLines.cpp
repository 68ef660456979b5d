// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ProgressLines.h"

#include <QString>

#include <cstdio>

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

} // namespace

ProgressLines::ProgressLines() : m_onTerminal(::isatty(STDERR_FILENO) == 1) {}

void ProgressLines::show(const std::vector<std::string> &lines) {
    if (!m_onTerminal || lines == m_shown)
        return;
    clear();
    for (const std::string &line : lines)
        std::fprintf(stderr, "%s\n", fitted(line).c_str());
    std::fflush(stderr);
    m_shown = lines;
}

void ProgressLines::clear() {
    if (m_shown.empty())
        return;
    // Up to the first of them, and everything below it away.
    std::fprintf(stderr, "\x1b[%zuA\r\x1b[J", m_shown.size());
    std::fflush(stderr);
    m_shown.clear();
}

} // namespace vantrell
