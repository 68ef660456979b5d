// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/BlockArea.h"
#include "Media/Encoding/PlainColour.h"
#include "Support/BlockMap.h"

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// An encoder's picture as a decoder will see it, which is what its next picture refers to: NV12 in whole
/// macroblocks, with a margin all around that repeats the edge. Borrowed from the encoder.
struct ReconstructedPicture {
    /// Pixels of luma around the picture that an encoder refers to.
    static constexpr int margin = 32;

    std::uint8_t *luma = nullptr;
    std::uint8_t *chroma = nullptr;
    std::ptrdiff_t lumaStride = 0;
    std::ptrdiff_t chromaStride = 0;
    /// In macroblocks.
    int columns = 0;
    int rows = 0;

    bool isNull() const { return luma == nullptr; }

    /// Fills all of this picture, and its margin so far, with what lies in `whole` at `place`, which has this
    /// picture's size, and around it.
    void fillFrom(const ReconstructedPicture &whole, const BlockArea &place, int around = margin) const;

    /// Only its margin, which the encoder has made of its own edge.
    void fillMarginFrom(const ReconstructedPicture &whole, const BlockArea &place, int around = margin) const;

    /// The other way round: writes the part of this picture that lies at `part` of `whole` there, and the
    /// margin where it is at the edge of `whole`. `place` is where this picture lies.
    void writeTo(const ReconstructedPicture &whole, const BlockArea &place, const BlockArea &part) const;

    /// Makes the marked blocks what lies `distance` pixels of luma further down, which is in the picture, and
    /// the margin beside them to match.
    void copyFromBelow(const BlockMap &blocks, int distance) const;

    /// Fills a block, and the margin beside it, with one colour.
    void fill(int column, int row, PlainColour colour) const;
};

} // namespace vantrell
