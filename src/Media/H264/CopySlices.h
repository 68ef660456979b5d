// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/H264/CabacEncoder.h"
#include "Media/H264/SliceHeader.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace vantrell {

/// Slices of macroblocks that are all copies of what was in the picture before, there or above or below
/// (P_L0_16x16 and P_Skip without a residual). Not thread-safe.
class CopySlices {
public:
    /// A macroblock that is the same whether it is copied or not.
    static constexpr std::int16_t anyDistance = INT16_MIN;

    /// Appends such a slice of as many macroblocks as `distances`, at least one: each is a copy of what lay
    /// so many pixels of luma further down, most of them `usual` or zero.
    void append(std::vector<std::uint8_t> &stream, const StreamLayout &layout, int firstBlock,
                std::span<const std::int16_t> distances, int usual, std::uint32_t frameNumber);

private:
    /// What those behind it need to know of a macroblock. Motion is in quarters of a pixel, downwards.
    struct Block {
        int motion = 0;
        /// mvd_l0: what the motion differs from what was predicted.
        int difference = 0;
        bool isSkipped = false;
    };
    struct Neighbours {
        const Block *left;
        const Block *above;
        /// Above and to the right, or to the left where that is not there.
        const Block *corner;
    };

    Neighbours neighboursOf(int index, int column, int columns) const;
    void write(const Block &block, const Neighbours &around);
    void writeDifference(int difference, int around);

    std::vector<Block> m_blocks;
    CabacEncoder m_encoder;
    std::array<CabacContext, 78> m_contexts;
    BitWriter m_data;
};

} // namespace vantrell
