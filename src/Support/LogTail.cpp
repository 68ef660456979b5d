// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/LogTail.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include <unistd.h>

namespace vantrell {

namespace {

struct Line {
    /// 0: none yet, or being written.
    std::atomic<std::size_t> length = 0;
    char text[LogTail::lineLength] = "";
};

constinit Line lines[LogTail::lineCount];
constinit std::atomic<std::size_t> added = 0;

} // namespace

void LogTail::add(const char *text) {
    Line &line = lines[added.fetch_add(1, std::memory_order_relaxed) % lineCount];
    line.length.store(0, std::memory_order_relaxed);
    const std::size_t length = std::min(std::strlen(text), lineLength - 1);
    std::memcpy(line.text, text, length);
    line.text[length] = '\n';
    line.length.store(length + 1, std::memory_order_release);
}

void LogTail::write(int descriptor) {
    const std::size_t count = added.load(std::memory_order_relaxed);
    for (std::size_t i = count > lineCount ? count - lineCount : 0; i < count; ++i) {
        const Line &line = lines[i % lineCount];
        if (::write(descriptor, line.text, line.length.load(std::memory_order_acquire)) < 0)
            return;
    }
}

} // namespace vantrell
