// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrell::bench {

/// Structural similarity of two planes of bytes: mean over blocks of 8 by 8 pixels, 4 apart.
double ssim(const std::uint8_t *a, std::ptrdiff_t aStride, const std::uint8_t *b, std::ptrdiff_t bStride,
            int width, int height);

} // namespace vantrell::bench
