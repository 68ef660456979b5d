// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>

namespace vantrell {

/// Chooses the H.264 quantizer. Text and everything that changes little gets a fine one, for ever: it costs
/// next to nothing. Large moving pictures get a coarser one the more there is in them, as the eye allows, so
/// that a film that plays does not blow the file up. It moves in steps and seldom: parts that stand still are
/// passed over by the encoder only while the quantizer is not finer than the one that they were encoded with.
class QuantizerControl {
public:
    static constexpr int finest = 19;
    /// libx264 at a constant quantizer of 19 clips whatever is asked for to 16 to 22.
    static constexpr int coarsest = 22;
    static constexpr int finestOfKeyFrames = 16;
    /// Of what has stood still for a moment.
    static constexpr int atRest = 16;

    /// `blocks` is the picture's number of macroblocks.
    explicit QuantizerControl(int blocks) : m_blocks(blocks) {}

    /// For the next frame; a key frame, which everything after it builds on, gets a finer one.
    int quantizer(bool isKeyFrame) const;

    /// Nothing large has moved for a while.
    bool isCalm(double hostTime) const;

    /// What the frame that was just encoded took.
    void frameEncoded(double hostTime, int changedBlocks, std::size_t bytes, bool isKeyFrame);

private:
    /// So much detail does not call for a coarser quantizer yet.
    static constexpr double plainDetail = 8;

    int m_blocks;
    int m_quantizer = finest;
    /// Running mean of what a changed block takes, as if it were encoded at the finest quantizer: bits.
    double m_detail = plainDetail;
    double m_changedAt = 0;
    double m_movedAt = 0;
};

} // namespace vantrell
