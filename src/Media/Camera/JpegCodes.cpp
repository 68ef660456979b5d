// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegCodes.h"

#include <algorithm>
#include <numeric>

namespace vantrell {

namespace {

/// The number of `count` bits that `window` begins with: the upper half of them is positive, the lower half
/// negative.
int numberOf(std::uint64_t window, int count) {
    const int bits = int(window >> 1 >> (63 - count));
    const bool isNegative = window >> 63 == 0;
    return isNegative ? bits - (1 << count) + 1 : bits;
}

} // namespace

JpegCodes::JpegCodes(std::span<const std::uint8_t, longestCode> counts,
                     std::span<const std::uint8_t> symbols) {
    const std::size_t sum = std::accumulate(counts.begin(), counts.end(), std::size_t(0));
    if (sum == 0 || sum > m_symbols.size() || sum != symbols.size())
        return;
    std::ranges::copy(symbols, m_symbols.begin());
    std::uint32_t code = 0;
    std::int32_t place = 0;
    for (int length = 1; length <= longestCode; ++length, code <<= 1) {
        m_place[std::size_t(length)] = place - std::int32_t(code);
        code += counts[std::size_t(length - 1)];
        place += counts[std::size_t(length - 1)];
        // None has ones alone.
        if (code >= 1u << length)
            return;
        m_end[std::size_t(length)] = code << (longestCode - length);
    }
    for (std::size_t i = 0; i < m_short.size(); ++i)
        if (const Number number = readLong(std::uint64_t(i) << (64 - shortBits)); number.bits() <= shortBits)
            m_short[i] = number;
    m_isEmpty = false;
}

JpegCodes::Number JpegCodes::readLong(std::uint64_t window) const {
    const auto bits = std::uint32_t(window >> (64 - longestCode));
    const auto end = std::ranges::upper_bound(m_end, bits);
    if (end == m_end.end())
        return {};
    const auto length = int(end - m_end.begin());
    const std::int32_t place = m_place[std::size_t(length)] + std::int32_t(bits >> (longestCode - length));
    const std::uint8_t symbol = m_symbols[std::size_t(place)];
    const int count = symbol & 15;
    return {numberOf(window << length, count), symbol >> 4, length + count};
}

} // namespace vantrell
