// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// Pixels in NV12, of one of its planes.
struct BlockPixels {
    const std::uint8_t *data;
    std::ptrdiff_t stride;
};

/// The sum of absolute differences of the luma of two macroblocks.
int absoluteDifference(BlockPixels a, BlockPixels b);

/// The sum of squared differences of a macroblock's luma.
int squaredDifference(BlockPixels a, BlockPixels b);

/// The sum of squared differences of a macroblock's chroma; `b` is the mean of the rows there and of those
/// below when `isBetweenRows`, as a decoder reckons it.
int squaredChromaDifference(BlockPixels a, BlockPixels b, bool isBetweenRows);

} // namespace vantrell
