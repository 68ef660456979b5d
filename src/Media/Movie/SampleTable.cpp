// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/SampleTable.h"

#include <algorithm>
#include <limits>

namespace vantrell {

void SampleTable::addChunk(std::uint64_t offset, std::uint32_t description,
                           std::span<const SampleEntry> samples) {
    if (samples.empty())
        return;
    m_chunks.push_back(offset);
    const auto perChunk = std::uint32_t(samples.size());
    if (m_chunkRuns.empty() || m_chunkRuns.back().samplesPerChunk != perChunk ||
        m_chunkRuns.back().description != description)
        m_chunkRuns.push_back({std::uint32_t(m_chunks.size()), perChunk, description});
    for (const SampleEntry &sample : samples)
        addSample(sample);
}

void SampleTable::addSample(SampleEntry sample) {
    if (m_sizes.empty()) {
        m_firstDts = sample.dts;
        m_firstPts = sample.dts + sample.compositionOffset;
    } else {
        // A source whose clock steps back must not cost the recording.
        sample.dts = std::max(sample.dts, m_lastDts + 1);
        addDuration(std::uint32_t(
            std::min<std::int64_t>(sample.dts - m_lastDts, std::numeric_limits<std::uint32_t>::max())));
    }
    m_lastDts = sample.dts;
    m_sizes.push_back(sample.size);
    if (sample.isKey)
        m_keys.push_back(std::uint32_t(m_sizes.size()));
    m_hasOffsets = m_hasOffsets || sample.compositionOffset != 0;
    if (m_offsets.empty() || m_offsets.back().offset != sample.compositionOffset)
        m_offsets.push_back({0, sample.compositionOffset});
    ++m_offsets.back().count;
}

void SampleTable::addDuration(std::uint32_t delta) {
    if (m_durations.empty() || m_durations.back().delta != delta)
        m_durations.push_back({0, delta});
    ++m_durations.back().count;
}

void SampleTable::endAt(std::int64_t dts) {
    if (isEmpty())
        return;
    m_end = std::max(dts, m_lastDts + 1);
}

std::int64_t SampleTable::endDts() const {
    if (isEmpty())
        return 0;
    return m_end.value_or(m_lastDts + std::int64_t(lastDelta()));
}

void SampleTable::appendBoxes(ByteWriter &out, bool markKeys) const {
    std::vector<DurationRun> durations = m_durations;
    if (!isEmpty()) {
        const auto last = std::uint32_t(
            std::min<std::int64_t>(endDts() - m_lastDts, std::numeric_limits<std::uint32_t>::max()));
        if (durations.empty() || durations.back().delta != last)
            durations.push_back({0, last});
        ++durations.back().count;
    }
    out.fullBox("stts", 0, 0, [&] {
        out.u32(std::uint32_t(durations.size()));
        for (const DurationRun &run : durations) {
            out.u32(run.count);
            out.u32(run.delta);
        }
    });
    if (m_hasOffsets)
        out.fullBox("ctts", 0, 0, [&] {
            out.u32(std::uint32_t(m_offsets.size()));
            for (const OffsetRun &run : m_offsets) {
                out.u32(run.count);
                out.i32(run.offset);
            }
        });
    if (markKeys && m_keys.size() != m_sizes.size())
        out.fullBox("stss", 0, 0, [&] {
            out.u32(std::uint32_t(m_keys.size()));
            for (const std::uint32_t key : m_keys)
                out.u32(key);
        });
    out.fullBox("stsc", 0, 0, [&] {
        out.u32(std::uint32_t(m_chunkRuns.size()));
        for (const ChunkRun &run : m_chunkRuns) {
            out.u32(run.firstChunk);
            out.u32(run.samplesPerChunk);
            out.u32(run.description);
        }
    });
    out.fullBox("stsz", 0, 0, [&] {
        out.u32(0);
        out.u32(std::uint32_t(m_sizes.size()));
        for (const std::uint32_t size : m_sizes)
            out.u32(size);
    });
    const bool needsWide = !m_chunks.empty() && m_chunks.back() > std::numeric_limits<std::uint32_t>::max();
    out.fullBox(needsWide ? "co64" : "stco", 0, 0, [&] {
        out.u32(std::uint32_t(m_chunks.size()));
        for (const std::uint64_t offset : m_chunks)
            needsWide ? out.u64(offset) : out.u32(std::uint32_t(offset));
    });
}

std::uint64_t SampleTable::boxBytes() const {
    return 128 + 4 * m_sizes.size() + 8 * (m_durations.size() + 1) +
           8 * (m_hasOffsets ? m_offsets.size() : 0) + 4 * m_keys.size() + 12 * m_chunkRuns.size() +
           8 * m_chunks.size();
}

} // namespace vantrell
