// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/BitReader.h"

namespace vantrell {

namespace {

constexpr int longestPrefix = 31;

} // namespace

bool BitReader::bit() {
    const std::size_t byte = m_position / 8;
    if (byte >= m_bytes.size()) {
        m_failed = true;
        return false;
    }
    const bool value = m_bytes[byte] >> (7 - m_position % 8) & 1;
    ++m_position;
    return value;
}

std::uint32_t BitReader::bits(int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 1 | std::uint32_t(bit());
    return value;
}

std::uint32_t BitReader::unsignedNumber() {
    int zeros = 0;
    while (!bit()) {
        if (m_failed || ++zeros > longestPrefix) {
            m_failed = true;
            return 0;
        }
    }
    return (std::uint32_t(1) << zeros) - 1 + bits(zeros);
}

std::int32_t BitReader::signedNumber() {
    const std::uint32_t code = unsignedNumber();
    const auto magnitude = std::int32_t((code >> 1) + (code & 1));
    return code & 1 ? magnitude : -magnitude;
}

} // namespace vantrell
