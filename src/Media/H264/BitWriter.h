// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantrell {

/// Writes the syntax elements of a raw byte sequence payload (H.264, clause 9.1).
class BitWriter {
public:
    void bit(bool value);
    /// u(n)
    void bits(std::uint32_t value, int count);
    /// ue(v), below 2^32 - 1
    void unsignedNumber(std::uint32_t value);
    /// se(v)
    void signedNumber(std::int32_t value);
    /// Repeats a bit until a whole number of bytes is there.
    void alignWith(bool value);

    std::size_t position() const { return m_position; }
    /// The last one may be begun only, zeros behind.
    const std::vector<std::uint8_t> &bytes() const { return m_bytes; }
    void clear();
    /// Begins with the first `count` bits of `bytes`.
    void beginWith(const std::vector<std::uint8_t> &bytes, std::size_t count);

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

} // namespace vantrell
