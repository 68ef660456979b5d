// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/BitWriter.h"

#include <bit>

namespace vantrell {

void BitWriter::bit(bool value) {
    if (m_position % 8 == 0)
        m_bytes.push_back(0);
    if (value)
        m_bytes.back() |= std::uint8_t(0x80 >> m_position % 8);
    ++m_position;
}

void BitWriter::bits(std::uint32_t value, int count) {
    while (count-- > 0)
        bit(value >> count & 1);
}

void BitWriter::unsignedNumber(std::uint32_t value) {
    const int length = std::bit_width(value + 1);
    bits(0, length - 1);
    bits(value + 1, length);
}

void BitWriter::signedNumber(std::int32_t value) {
    unsignedNumber(value > 0 ? std::uint32_t(value) * 2 - 1 : std::uint32_t(-std::int64_t(value)) * 2);
}

void BitWriter::alignWith(bool value) {
    while (m_position % 8 != 0)
        bit(value);
}

void BitWriter::clear() {
    m_bytes.clear();
    m_position = 0;
}

void BitWriter::beginWith(const std::vector<std::uint8_t> &bytes, std::size_t count) {
    m_bytes.assign(bytes.begin(), bytes.begin() + std::ptrdiff_t((count + 7) / 8));
    m_position = count;
    if (count % 8 != 0)
        m_bytes.back() &= std::uint8_t(0xff00 >> count % 8);
}

} // namespace vantrell
