// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioSource.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace vantrell {

/// Sound on its way from the device's thread to the encoder's: stereo, at most `limitSeconds` of it. When the
/// encoder does not keep up, the oldest goes; it will be silence. Not thread-safe: its owner locks.
class AudioBlockQueue {
public:
    struct Block {
        /// Interleaved stereo.
        std::vector<float> samples;
        double hostTime = 0;
        bool startsAnew = false;
    };

    explicit AudioBlockQueue(double limitSeconds) : m_limit(std::int64_t(limitSeconds * audioSampleRate)) {}

    /// Copies the block, one channel to both.
    void push(const AudioBlock &block);
    /// The oldest block.
    std::optional<Block> pop();
    /// Gives a block's memory back.
    void recycle(Block block);

    double seconds() const { return double(m_frames) / audioSampleRate; }
    /// Frames that were thrown away so far.
    std::int64_t lostFrames() const { return m_lost; }

private:
    static std::int64_t frames(const Block &block) { return std::int64_t(block.samples.size()) / 2; }

    const std::int64_t m_limit;
    std::int64_t m_frames = 0;
    std::int64_t m_lost = 0;
    std::deque<Block> m_blocks;
    std::vector<Block> m_spare;
};

} // namespace vantrell
