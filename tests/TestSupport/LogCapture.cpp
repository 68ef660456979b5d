// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/LogCapture.h"

#include <QString>

#include <algorithm>
#include <mutex>

namespace vantrell::testing {

namespace {

std::mutex capturedMutex;
std::vector<std::string> captured;

void capture(QtMsgType, const QMessageLogContext &context, const QString &message) {
    std::scoped_lock lock(capturedMutex);
    captured.push_back(std::string(context.category ? context.category : "") + ": " + message.toStdString());
}

} // namespace

LogCapture::LogCapture() {
    std::scoped_lock lock(capturedMutex);
    captured.clear();
    m_previous = qInstallMessageHandler(capture);
}

LogCapture::~LogCapture() {
    qInstallMessageHandler(m_previous);
}

std::vector<std::string> LogCapture::lines() const {
    std::scoped_lock lock(capturedMutex);
    return captured;
}

int LogCapture::count(const std::string &text) const {
    const std::vector<std::string> all = lines();
    return int(std::ranges::count_if(
        all, [&text](const std::string &line) { return line.find(text) != std::string::npos; }));
}

} // namespace vantrell::testing
