// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/SampleTable.h"
#include "Media/Movie/TrackDescription.h"
#include "Support/DiskFile.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace vantrell {

/// The file beside an unfinished movie that says what the movie holds.
///
/// First a page of notes that are overwritten in place (each in two copies, written in turn, so that one is
/// whole at any instant), then records behind one another, each with its length and checksum: a tail that a
/// crash tore is recognised and left out. Whoever writes or recovers the movie holds a lock on the journal;
/// the lock ends with the process.
///
/// Records and notes are written by one thread at a time; `noteSynced` may run beside the others.
class MovieJournal {
public:
    static std::filesystem::path pathFor(const std::filesystem::path &movie);
    /// The movie that a journal belongs to; nothing when the path is no journal's.
    static std::optional<std::filesystem::path> movieFor(const std::filesystem::path &journal);

    /// Creates and locks the journal of `movie`.
    static std::expected<MovieJournal, PlatformError> create(const std::filesystem::path &movie);

    std::expected<void, PlatformError> addTrack(const TrackDescription &track);
    /// `data` lies in the movie at `offset`, already written.
    std::expected<void, PlatformError> addChunk(std::uint32_t track, std::uint64_t offset,
                                                std::span<const std::uint8_t> data,
                                                std::span<const SampleEntry> samples);
    std::expected<void, PlatformError> addEnds(std::span<const std::optional<std::int64_t>> ends);

    /// The recording went on until `seconds` after the movie's zero.
    std::expected<void, PlatformError> noteElapsed(double seconds);
    /// The movie's bytes before `end` are durable: a reader need not check them.
    std::expected<void, PlatformError> noteSynced(std::uint64_t end);

    const DiskFile &file() const { return m_file; }

private:
    explicit MovieJournal(DiskFile file) : m_file(std::move(file)) {}

    std::expected<void, PlatformError> append(const std::vector<std::uint8_t> &payload);

    DiskFile m_file;
    std::uint64_t m_end = 0;
    std::uint64_t m_reserved = 0;
    std::uint64_t m_elapsedCount = 0;
    std::uint64_t m_syncedCount = 0;
};

/// What a journal says.
struct MovieJournalContents {
    struct Chunk {
        std::uint32_t track = 0;
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
        std::uint32_t checksum = 0;
        std::vector<SampleEntry> samples;
    };

    std::vector<TrackDescription> tracks;
    std::vector<Chunk> chunks;
    /// Present when the movie's end had been decided.
    std::optional<std::vector<std::optional<std::int64_t>>> ends;
    double elapsed = 0;
    std::uint64_t synced = 0;
};

/// Opens and locks the journal for recovery. Fails with EWOULDBLOCK while its writer lives.
std::expected<DiskFile, PlatformError> lockMovieJournal(const std::filesystem::path &journal);

/// Everything up to the first record that is not whole. A file that is no journal is an error of the domain
/// "movie".
std::expected<MovieJournalContents, PlatformError> readMovieJournal(const DiskFile &journal);

} // namespace vantrell
