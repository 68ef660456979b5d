// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/H264/CabacEncoder.h"
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
    /// Between two macroblocks.
    struct Mark {
        CabacEncoder encoder;
        CabacContext context;
        /// Written so far.
        std::size_t bits = 0;
    };

    /// After every so many macroblocks, as far as it was needed, and the bits of the longest run.
    std::vector<Mark> m_marks;
    BitWriter m_longest;
    BitWriter m_data;
};

} // namespace vantrell
