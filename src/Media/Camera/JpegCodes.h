// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vantrell {

/// A Huffman table of a JPEG picture. Its codes say how many bits a number behind them has.
class JpegCodes {
public:
    static constexpr int longestCode = 16;
    /// Of a code and its number.
    static constexpr int mostBits = longestCode + 15;

    /// Without codes.
    JpegCodes() = default;
    /// `counts`: how many codes of 1, 2, ... 16 bits there are; `symbols` in the order of their codes.
    /// Without codes when the two make no table.
    JpegCodes(std::span<const std::uint8_t, longestCode> counts, std::span<const std::uint8_t> symbols);

    /// As one word, which is quicker than its parts.
    class Number {
    public:
        Number() = default;
        Number(int value, int zeros, int bits)
            : m_word(std::uint32_t(value) << 16 | std::uint32_t(zeros) << 8 | std::uint32_t(bits)) {}
        int value() const { return std::int16_t(m_word >> 16); }
        /// Coefficients to be left out before it.
        std::uint32_t zeros() const { return m_word >> 8 & 255; }
        /// Of the code and the number; 0: there is no such code.
        std::uint32_t bits() const { return m_word & 255; }

    private:
        std::uint32_t m_word = 0;
    };
    /// What `window` begins with at its highest bit.
    Number read(std::uint64_t window) const {
        Number number = m_short[window >> (64 - shortBits)];
        if (number.bits() == 0) [[unlikely]]
            number = readLong(window);
        return number;
    }
    bool isEmpty() const { return m_isEmpty; }

private:
    static constexpr int shortBits = 10;
    Number readLong(std::uint64_t window) const;

    bool m_isEmpty = true;
    /// For what the window may begin with, if code and number lie in it.
    std::array<Number, 1 << shortBits> m_short{};
    /// For each length: where codes of that length end, as the highest of 16 bits; the place of the first
    /// symbol less its code.
    std::array<std::uint32_t, longestCode + 1> m_end{};
    std::array<std::int32_t, longestCode + 1> m_place{};
    std::array<std::uint8_t, 256> m_symbols{};
};

} // namespace vantrell
