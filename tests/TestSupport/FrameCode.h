// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vantrell::testing {

/// A frame's number as black and white squares that survive compression: a row of 24 squares of 16 pixels, 20
/// bits of the number and 4 of a check sum.
namespace framecode {

constexpr int squares = 24;
constexpr int squareSize = 16;
constexpr int width = squares * squareSize;
constexpr int height = squareSize;
constexpr std::uint32_t numbers = 1u << 20;

/// The squares, lowest bit first; a set bit is white.
std::uint32_t squaresOf(std::uint32_t number);

/// Reads the number from a luma plane at which the code's top left corner lies; nothing when it is damaged.
std::optional<std::uint32_t> read(const std::uint8_t *luma, std::ptrdiff_t stride);

/// Draws it into BGRX pixels.
void draw(std::uint32_t number, std::uint8_t *pixels, std::ptrdiff_t stride);

} // namespace framecode
} // namespace vantrell::testing
