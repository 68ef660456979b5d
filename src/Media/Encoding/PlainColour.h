// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/BlockError.h"

#include <cstdint>
#include <optional>

namespace vantrell {

/// The one colour of all of a macroblock: of paper between letters. A value type.
struct PlainColour {
    std::uint8_t luma = 0;
    /// As NV12 holds the two of them.
    std::uint16_t chroma = 0;

    /// Nothing when there are more colours.
    static std::optional<PlainColour> of(BlockPixels brightness, BlockPixels colours);

    /// Whether it fills a macroblock's luma, and so many rows of its chroma, to the last bit.
    bool fills(BlockPixels brightness, BlockPixels colours, int colourRows) const;
};

} // namespace vantrell
