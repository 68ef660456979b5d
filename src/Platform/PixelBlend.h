// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <algorithm>
#include <cstdint>

namespace vantrell {

/// Lays a pixel of premultiplied ARGB over one of BGRX, whose fourth byte stays.
inline void blendOver(std::uint32_t over, std::uint8_t *under) {
    const std::uint32_t rest = 255 - (over >> 24);
    for (unsigned channel = 0; channel < 3; ++channel)
        under[channel] = std::uint8_t(
            std::min(255u, ((over >> (8 * channel)) & 0xff) + (under[channel] * rest + 127) / 255));
}

} // namespace vantrell
