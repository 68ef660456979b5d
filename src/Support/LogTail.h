// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>

namespace vantrell {

/// The last log lines of this process, in memory that is there from the start: a crash handler can write
/// them.
class LogTail {
public:
    static constexpr std::size_t lineCount = 60;
    static constexpr std::size_t lineLength = 240;

    /// Keeps a line, the oldest goes. Thread-safe.
    static void add(const char *text);

    /// Writes what is kept, oldest first, a line each. Only uses what a signal handler may: a line that is
    /// being added right now comes torn.
    static void write(int descriptor);
};

} // namespace vantrell
