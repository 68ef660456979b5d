// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/CrashText.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <unistd.h>

namespace vantrell {

CrashText &CrashText::add(const char *text, std::size_t length) {
    length = std::min(length, sizeof m_text - 1 - m_length);
    std::memcpy(m_text + m_length, text, length);
    m_length += length;
    m_text[m_length] = '\0';
    return *this;
}

CrashText &CrashText::add(const char *text) {
    return add(text, std::strlen(text));
}

CrashText &CrashText::add(std::uint64_t number) {
    char digits[24];
    return add(digits, std::size_t(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
}

CrashText &CrashText::add(int number) {
    char digits[16];
    return add(digits, std::size_t(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
}

CrashText &CrashText::addHex(std::uint64_t number) {
    char digits[24];
    return add(digits, std::size_t(std::to_chars(digits, digits + sizeof digits, number, 16).ptr - digits));
}

void CrashText::write(int descriptor) const {
    for (std::size_t done = 0; done < m_length;) {
        const ssize_t written = ::write(descriptor, m_text + done, m_length - done);
        if (written <= 0)
            return;
        done += std::size_t(written);
    }
}

} // namespace vantrell
