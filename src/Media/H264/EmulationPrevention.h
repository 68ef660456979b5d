// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantrell {

/// What a NAL unit holds behind its first byte, without the bytes 3 that keep start codes out of it (H.264,
/// clause 7.4.1); not more than `most` bytes of it.
std::vector<std::uint8_t> payloadOf(std::span<const std::uint8_t> unit, std::size_t most);

/// Appends a payload to a NAL unit and puts those bytes in.
class EmulationPrevention {
public:
    explicit EmulationPrevention(std::vector<std::uint8_t> &unit) : m_unit(unit) {}

    void append(std::uint8_t byte);
    void append(std::span<const std::uint8_t> bytes);

private:
    std::vector<std::uint8_t> &m_unit;
    int m_zeros = 0;
};

} // namespace vantrell
