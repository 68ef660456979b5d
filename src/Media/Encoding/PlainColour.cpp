// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/PlainColour.h"

#include "Media/Encoding/BlockArea.h"

#include <array>
#include <cstring>

namespace vantrell {

namespace {

bool isFilled(BlockPixels block, int rows, std::uint64_t with) {
    for (; rows > 0; --rows, block.data += block.stride) {
        std::array<std::uint64_t, blockEdge / sizeof with> row;
        std::memcpy(row.data(), block.data, blockEdge);
        if (((row[0] ^ with) | (row[1] ^ with)) != 0)
            return false;
    }
    return true;
}

} // namespace

std::optional<PlainColour> PlainColour::of(BlockPixels brightness, BlockPixels colours) {
    PlainColour colour{.luma = *brightness.data};
    std::memcpy(&colour.chroma, colours.data, sizeof colour.chroma);
    return colour.fills(brightness, colours, blockEdge / 2) ? std::optional(colour) : std::nullopt;
}

bool PlainColour::fills(BlockPixels brightness, BlockPixels colours, int colourRows) const {
    return isFilled(brightness, blockEdge, luma * 0x0101010101010101U) &&
           isFilled(colours, colourRows, chroma * 0x0001000100010001U);
}

} // namespace vantrell
