// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vantrell {

/// What is not zero in a block of a JPEG picture, multiplied by its quantizer.
struct JpegBlock {
    struct Part {
        std::int16_t value = 0;
        /// In the order of the file, from 1 to 63.
        std::uint8_t place = 0;
    };
    /// What `mean` may be: far beyond any picture.
    static constexpr int largest = 4095;

    /// Eight times how much brighter than middle grey the block is in the mean.
    int mean = 0;
    int count = 0;
    std::array<Part, 63> parts;
};

// Painting adds up the waves that a block has, which are few in a camera's picture. It makes limited range of
// full range, and half the height, at no cost. Reentrant.

/// The processor has what makes it quick; without it painting must not be called.
bool isJpegTransformQuick();

/// Eight rows of eight.
void paintLuma(const JpegBlock &block, std::uint8_t *to, std::ptrdiff_t stride);

/// Eight rows of eight pairs, as NV12 has them; with `isTall` two rows of the block make one of four.
void paintChroma(const JpegBlock &cb, const JpegBlock &cr, bool isTall, std::uint8_t *to,
                 std::ptrdiff_t stride);

} // namespace vantrell
