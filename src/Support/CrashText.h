// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// A text that is put together where nothing may be allocated: in a signal handler. What does not fit is left
/// out.
class CrashText {
public:
    CrashText() = default;
    explicit CrashText(const char *text) { add(text); }

    CrashText &add(const char *text);
    CrashText &add(const char *text, std::size_t length);
    CrashText &add(std::uint64_t number);
    CrashText &add(int number);
    CrashText &addHex(std::uint64_t number);

    const char *text() const { return m_text; }
    void write(int descriptor) const;

private:
    char m_text[4096 + 128] = "";
    std::size_t m_length = 0;
};

} // namespace vantrell
