// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>
#include <vector>

namespace vantrell {

/// Lines at the bottom of a terminal that are written over until they are cleared: one for each file that is
/// on its way. Log lines of any thread are written above them. Nothing where standard error is no terminal.
/// Main thread, one at a time.
class ProgressLines {
public:
    ProgressLines();
    ~ProgressLines();
    ProgressLines(const ProgressLines &) = delete;
    ProgressLines &operator=(const ProgressLines &) = delete;

    void show(const std::vector<std::string> &lines);
    /// Before anything else is written.
    void clear();

private:
    const bool m_onTerminal;
};

} // namespace vantrell
