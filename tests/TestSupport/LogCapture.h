// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QtGlobal>

#include <string>
#include <vector>

namespace vantrell::testing {

/// Collects the log lines written while it lives, from every thread, as "category: message". One at a time.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    std::vector<std::string> lines() const;
    /// How many lines hold `text`.
    int count(const std::string &text) const;
    bool contains(const std::string &text) const { return count(text) > 0; }

private:
    QtMessageHandler m_previous;
};

} // namespace vantrell::testing
