// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/ByteWriter.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantrell {

/// One sample as a movie's tables know it.
struct SampleEntry {
    std::uint32_t size = 0;
    bool isKey = false;
    /// Time scale of the track, from the movie's zero.
    std::int64_t dts = 0;
    /// Presentation minus decoding.
    std::int32_t compositionOffset = 0;
    bool operator==(const SampleEntry &) const = default;
};

/// Where a track's samples lie and when they are shown, run-length coded as in the file so that hours of
/// them stay small. Thread-bound.
class SampleTable {
public:
    /// Samples that lie one behind the other from `offset`, all of the sample description with that index
    /// (counted from 1). Decoding times are made to increase by at least one tick.
    void addChunk(std::uint64_t offset, std::uint32_t description, std::span<const SampleEntry> samples);

    /// Gives the last sample the duration that reaches `dts`, one tick at least.
    void endAt(std::int64_t dts);

    bool isEmpty() const { return m_sizes.empty(); }
    std::size_t count() const { return m_sizes.size(); }
    std::int64_t firstDts() const { return m_firstDts; }
    /// Presentation time of the first sample.
    std::int64_t firstPts() const { return m_firstPts; }
    std::int64_t lastDts() const { return m_lastDts; }
    /// Decoding time at which the last sample ends; before `endAt` it is assumed to last as long as the one
    /// before it.
    std::int64_t endDts() const;
    /// The ticks between the last two samples.
    std::uint32_t lastDelta() const { return m_durations.empty() ? 1 : m_durations.back().delta; }

    /// Writes the boxes stts to co64; `markKeys` adds the key sample table of a track whose samples are not
    /// all keys.
    void appendBoxes(ByteWriter &out, bool markKeys) const;
    /// An upper bound of what `appendBoxes` writes.
    std::uint64_t boxBytes() const;

private:
    struct DurationRun {
        std::uint32_t count;
        std::uint32_t delta;
    };
    struct OffsetRun {
        std::uint32_t count;
        std::int32_t offset;
    };
    struct ChunkRun {
        std::uint32_t firstChunk;
        std::uint32_t samplesPerChunk;
        std::uint32_t description;
    };

    void addSample(SampleEntry sample);
    void addDuration(std::uint32_t delta);

    std::int64_t m_firstDts = 0;
    std::int64_t m_firstPts = 0;
    std::int64_t m_lastDts = 0;
    std::optional<std::int64_t> m_end;
    bool m_hasOffsets = false;
    std::vector<std::uint32_t> m_sizes;
    /// One entry fewer than samples until `endAt`.
    std::vector<DurationRun> m_durations;
    std::vector<OffsetRun> m_offsets;
    std::vector<std::uint32_t> m_keys;
    std::vector<std::uint64_t> m_chunks;
    std::vector<ChunkRun> m_chunkRuns;
};

} // namespace vantrell
