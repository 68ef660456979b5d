// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vantrell {

/// Reads the syntax elements of a raw byte sequence payload (H.264, clause 9.1). What is asked for beyond the
/// end reads as zeros and is remembered.
class BitReader {
public:
    explicit BitReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    bool bit();
    /// At most 32 bits, u(n).
    std::uint32_t bits(int count);
    /// ue(v)
    std::uint32_t unsignedNumber();
    /// se(v)
    std::int32_t signedNumber();

    /// Bits read so far.
    std::size_t position() const { return m_position; }
    bool isByteAligned() const { return m_position % 8 == 0; }
    /// Something was asked for that is not there.
    bool hasFailed() const { return m_failed; }

private:
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_position = 0;
    bool m_failed = false;
};

} // namespace vantrell
