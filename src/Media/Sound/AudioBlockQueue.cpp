// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/AudioBlockQueue.h"

#include <utility>

namespace vantrell {

namespace {

/// As many as lie in the queue when all is well.
constexpr std::size_t spareBlocks = 8;

} // namespace

void AudioBlockQueue::push(const AudioBlock &block) {
    Block stored;
    if (!m_spare.empty()) {
        stored = std::move(m_spare.back());
        m_spare.pop_back();
    }
    stored.hostTime = block.hostTime;
    stored.startsAnew = block.startsAnew;
    if (block.channels == 1) {
        stored.samples.clear();
        for (const float sample : block.samples)
            stored.samples.insert(stored.samples.end(), 2, sample);
    } else {
        stored.samples.assign(block.samples.begin(), block.samples.end());
    }
    m_frames += frames(stored);
    m_blocks.push_back(std::move(stored));
    while (m_frames > m_limit && m_blocks.size() > 1) {
        m_lost += frames(m_blocks.front());
        recycle(*pop());
        m_blocks.front().startsAnew = true;
    }
}

std::optional<AudioBlockQueue::Block> AudioBlockQueue::pop() {
    if (m_blocks.empty())
        return std::nullopt;
    Block block = std::move(m_blocks.front());
    m_blocks.pop_front();
    m_frames -= frames(block);
    return block;
}

void AudioBlockQueue::recycle(Block block) {
    if (m_spare.size() < spareBlocks)
        m_spare.push_back(std::move(block));
}

} // namespace vantrell
