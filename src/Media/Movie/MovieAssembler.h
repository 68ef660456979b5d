// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieHeader.h"
#include "Media/Movie/MovieWriter.h"
#include "Media/Movie/SampleTable.h"
#include "Media/Movie/TrackDescription.h"
#include "Support/DiskFile.h"

#include <cstdint>
#include <deque>
#include <expected>
#include <optional>
#include <span>
#include <vector>

namespace vantrell {

/// A movie file under construction: a head of fixed size, then chunks of samples, then, at the end, the
/// tables. It knows no threads and no journal; MovieWriter adds both. Thread-bound.
class MovieAssembler {
public:
    /// Bytes before the first sample.
    static constexpr std::uint64_t headBytes = 36;

    /// Writes the head into an empty file.
    static std::expected<MovieAssembler, PlatformError> begin(DiskFile file);
    /// Takes over a file whose chunks are in place up to some point; `adoptChunk` then says where they are.
    static MovieAssembler resume(DiskFile file);

    std::uint32_t addTrack(TrackDescription description);

    /// Writes a chunk behind all others. On failure the movie is as before.
    std::expected<std::uint64_t, PlatformError>
    writeChunk(std::uint32_t track, std::span<const std::uint8_t> data, std::span<const SampleEntry> samples);
    /// Notes a chunk of `size` bytes that the file holds already.
    void adoptChunk(std::uint32_t track, std::uint64_t offset, std::uint64_t size,
                    std::span<const SampleEntry> samples, std::uint32_t description = 1);

    /// Where the next chunk goes.
    std::uint64_t end() const { return m_end; }
    std::uint64_t headerBytes() const;
    std::size_t trackCount() const { return m_tracks.size(); }
    const TrackDescription &description(std::uint32_t track) const { return m_tracks[track].description; }
    const SampleTable &samples(std::uint32_t track) const { return m_tracks[track].samples; }
    SampleTable &samples(std::uint32_t track) { return m_tracks[track].samples; }
    const DiskFile &file() const { return m_file; }

    /// Ends the tracks at `ends` (missing or none: with the last sample), writes the tables behind the data,
    /// cuts off what a failed write left there and makes all of it durable. May be repeated after a failure.
    std::expected<MovieSummary, PlatformError> finish(std::span<const std::optional<std::int64_t>> ends);
    /// The same with edits already made, one list per track.
    std::expected<MovieSummary, PlatformError> finishWithEdits(std::vector<std::vector<Edit>> edits);

private:
    struct Track {
        TrackDescription description;
        SampleTable samples;
    };

    explicit MovieAssembler(DiskFile file) : m_file(std::move(file)) {}

    DiskFile m_file;
    std::uint64_t m_end = headBytes;
    std::deque<Track> m_tracks;
};

} // namespace vantrell
