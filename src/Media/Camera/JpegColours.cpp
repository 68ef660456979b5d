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

std::uint8_t limitedChroma(unsigned full) {
    return std::uint8_t((full * chromaScale + chromaOffset) >> 8);
}

} // namespace

// The inner loops are simple enough for the compiler to make vectors of them.

void limitLuma(const std::uint8_t *from, std::ptrdiff_t fromStride, std::uint8_t *to, std::ptrdiff_t toStride,
               int width, int height) {
    for (int y = 0; y < height; ++y, from += fromStride, to += toStride)
        for (int x = 0; x < width; ++x)
            to[x] = std::uint8_t(std::uint16_t(from[x] * lumaScale + lumaOffset) >> 8);
}

void limitChroma(const std::uint8_t *cb, const std::uint8_t *cr, std::ptrdiff_t fromStride, bool isTall,
                 std::uint8_t *to, std::ptrdiff_t toStride, int width, int height) {
    const std::ptrdiff_t below = isTall ? fromStride : 0;
    for (int y = 0; y < height; ++y, to += toStride) {
        for (int x = 0; x < width; ++x) {
            to[2 * x] = limitedChroma((cb[x] + cb[x + below] + 1u) / 2);
            to[2 * x + 1] = limitedChroma((cr[x] + cr[x + below] + 1u) / 2);
        }
        cb += fromStride + below;
        cr += fromStride + below;
    }
}

} // namespace vantrell
