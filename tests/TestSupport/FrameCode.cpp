// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/FrameCode.h"

#include <cstring>

namespace vantrell::testing::framecode {

namespace {

constexpr int numberBits = 20;

std::uint32_t checkSum(std::uint32_t number) {
    std::uint32_t sum = 5;
    for (; number != 0; number >>= 4)
        sum = (sum * 3 + (number & 0xf)) & 0xf;
    return sum;
}

} // namespace

std::uint32_t squaresOf(std::uint32_t number) {
    number &= numbers - 1;
    return number | checkSum(number) << numberBits;
}

std::optional<std::uint32_t> read(const std::uint8_t *luma, std::ptrdiff_t stride) {
    std::uint32_t bits = 0;
    for (int i = 0; i < squares; ++i) {
        const int value = luma[squareSize / 2 * stride + i * squareSize + squareSize / 2];
        constexpr int darkest = 80;
        constexpr int brightest = 170;
        if (value > darkest && value < brightest)
            return std::nullopt;
        if (value >= brightest)
            bits |= 1u << i;
    }
    const std::uint32_t number = bits & (numbers - 1);
    if (squaresOf(number) != bits)
        return std::nullopt;
    return number;
}

void draw(std::uint32_t number, std::uint8_t *pixels, std::ptrdiff_t stride) {
    const std::uint32_t bits = squaresOf(number);
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < squares; ++i)
            std::memset(pixels + y * stride + std::ptrdiff_t(i) * squareSize * 4, (bits >> i & 1) ? 255 : 0,
                        squareSize * 4);
    }
}

} // namespace vantrell::testing::framecode
