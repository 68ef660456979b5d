// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/EmulationPrevention.h"

namespace vantrell {

namespace {

constexpr std::uint8_t preventionByte = 3;

} // namespace

std::vector<std::uint8_t> payloadOf(std::span<const std::uint8_t> unit, std::size_t most) {
    std::vector<std::uint8_t> payload;
    int zeros = 0;
    for (std::size_t i = 1; i < unit.size() && payload.size() < most; ++i) {
        if (zeros >= 2 && unit[i] == preventionByte) {
            zeros = 0;
            continue;
        }
        payload.push_back(unit[i]);
        zeros = unit[i] == 0 ? zeros + 1 : 0;
    }
    return payload;
}

void EmulationPrevention::append(std::uint8_t byte) {
    if (m_zeros >= 2 && byte <= preventionByte) {
        m_unit.push_back(preventionByte);
        m_zeros = 0;
    }
    m_unit.push_back(byte);
    m_zeros = byte == 0 ? m_zeros + 1 : 0;
}

void EmulationPrevention::append(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes)
        append(byte);
}

} // namespace vantrell
