// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegColours.h"

namespace vantrell {

namespace {

// In 1/256, exact at both ends and, for colours, in the middle.
constexpr unsigned lumaScale = 220;
constexpr unsigned lumaOffset = 16 * 256 + 128;
constexpr unsigned chromaScale = 225;
constexpr unsigned chromaOffset = 128 * 256 - 128 * chromaScale + 128;

// In 16 bits, of which twice as many fit into a vector as of those that integers are widened to.

std::uint8_t limitedLuma(std::uint16_t full) {
    return std::uint8_t(std::uint16_t(full * lumaScale + lumaOffset) >> 8);
}

std::uint8_t limitedChroma(std::uint16_t full) {
    return std::uint8_t(std::uint16_t(full * chromaScale + chromaOffset) >> 8);
}

/// Rounded up.
std::uint16_t meanOf(std::uint8_t one, std::uint8_t other) {
    return std::uint16_t(std::uint16_t(one + other + 1) >> 1);
}

} // namespace

// The inner loops are simple enough for the compiler to make vectors of them.

void limitLuma(const std::uint8_t *from, std::ptrdiff_t fromStride, std::uint8_t *to, std::ptrdiff_t toStride,
               int width, int height) {
    for (int y = 0; y < height; ++y, from += fromStride, to += toStride)
        for (int x = 0; x < width; ++x)
            to[x] = limitedLuma(from[x]);
}

void limitChroma(const std::uint8_t *cb, const std::uint8_t *cr, std::ptrdiff_t fromStride, bool isTall,
                 std::uint8_t *to, std::ptrdiff_t toStride, int width, int height) {
    const std::ptrdiff_t below = isTall ? fromStride : 0;
    for (int y = 0; y < height; ++y, to += toStride) {
        for (int x = 0; x < width; ++x) {
            to[2 * x] = limitedChroma(meanOf(cb[x], cb[x + below]));
            to[2 * x + 1] = limitedChroma(meanOf(cr[x], cr[x + below]));
        }
        cb += fromStride + below;
        cr += fromStride + below;
    }
}

} // namespace vantrell
