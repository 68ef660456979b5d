// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/H264/BitWriter.h"
#include "Media/H264/SliceHeader.h"

#include <cstdint>
#include <span>
#include <vector>

namespace vantrell {

/// Slices of macroblocks that are all as in the picture before (P_Skip without motion). They depend only on
/// how many there are. Not thread-safe.
class SkipSlices {
public:
    /// Appends such a slice of `blocks` macroblocks, at least one.
    void append(std::vector<std::uint8_t> &stream, const StreamLayout &layout, int firstBlock, int blocks,
                std::uint32_t frameNumber);

    /// The slice's data: valid until the next call.
    std::span<const std::uint8_t> data(int blocks);

private:
    /// The arithmetic encoder (H.264, clause 9.3.4) between two macroblocks.
    struct Coder {
        std::uint32_t low = 0;
        std::uint32_t range = 510;
        int outstanding = 0;
        bool isFirstBit = true;
        int state = 0;
        /// Written so far.
        std::size_t bits = 0;
    };

    static void putBit(Coder &coder, BitWriter &out, bool bit);
    static void renormalise(Coder &coder, BitWriter &out);
    static void skip(Coder &coder, BitWriter &out);
    static void continueSlice(Coder &coder, BitWriter &out);
    static void endSlice(Coder &coder, BitWriter &out);

    /// The encoder after every so many macroblocks, as far as it was needed, and the bits of the longest run.
    std::vector<Coder> m_marks;
    BitWriter m_longest;
    BitWriter m_data;
};

} // namespace vantrell
