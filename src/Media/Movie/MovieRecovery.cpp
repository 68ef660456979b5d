// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieRecovery.h"

#include "Media/Movie/Crc32c.h"
#include "Media/Movie/MovieAssembler.h"
#include "Media/Movie/MovieJournal.h"
#include "Support/Log.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <system_error>

#include <unistd.h>

namespace vantrell {

namespace {

using Chunk = MovieJournalContents::Chunk;

/// The journal is written behind the data and a power cut may keep the one and lose the other, so a chunk
/// that is not known to be durable is compared with its checksum.
bool isWhole(const DiskFile &movie, std::uint64_t movieSize, std::uint64_t synced, const Chunk &chunk) {
    if (chunk.offset < MovieAssembler::headBytes || chunk.size > movieSize ||
        chunk.offset > movieSize - chunk.size)
        return false;
    if (chunk.offset + chunk.size <= synced)
        return true;
    std::uint32_t checksum = 0;
    std::array<std::uint8_t, 65536> buffer{};
    for (std::uint64_t done = 0; done < chunk.size;) {
        const auto part =
            std::span(buffer).first(std::size_t(std::min<std::uint64_t>(buffer.size(), chunk.size - done)));
        const auto count = movie.readAt(chunk.offset + done, part);
        if (!count || *count != part.size())
            return false;
        checksum = crc32c(part, checksum);
        done += part.size();
    }
    return checksum == chunk.checksum;
}

/// Where the tracks end when nobody had decided it: the picture stands as long as time is known to have
/// passed.
std::vector<std::optional<std::int64_t>> endsByElapsedTime(const MovieAssembler &movie, double elapsed) {
    std::vector<std::optional<std::int64_t>> ends(movie.trackCount());
    constexpr double century = 100 * 365.25 * 86400;
    if (!std::isfinite(elapsed) || elapsed < 0 || elapsed > century)
        return ends;
    for (std::uint32_t track = 0; track < ends.size(); ++track) {
        const TrackDescription &description = movie.description(track);
        if (description.kind == TrackKind::video)
            ends[track] =
                std::max(movie.samples(track).endDts(), std::int64_t(elapsed * description.timeScale));
    }
    return ends;
}

std::expected<MovieSummary, PlatformError> removeEmpty(const std::filesystem::path &movie) {
    qCInfo(logCapture, "nothing to recover: no whole sample");
    if (::unlink(movie.c_str()) != 0 && errno != ENOENT)
        return std::unexpected(PlatformError::fromErrno("remove movie", errno));
    // The journal goes last: a movie without one would never be looked at again.
    if (::unlink(MovieJournal::pathFor(movie).c_str()) != 0)
        return std::unexpected(PlatformError::fromErrno("remove journal", errno));
    return MovieSummary{};
}

/// A journal whose first page was never written belongs to a movie that holds nothing but its head.
std::expected<MovieSummary, PlatformError> removeUnlessItHoldsData(const std::filesystem::path &movie,
                                                                   const PlatformError &journalError) {
    std::error_code failure;
    const std::uint64_t size = std::filesystem::file_size(movie, failure);
    if (failure ? failure == std::errc::no_such_file_or_directory : size <= MovieAssembler::headBytes)
        return removeEmpty(movie);
    return std::unexpected(journalError);
}

} // namespace

std::vector<std::filesystem::path> unfinishedMovies(const std::filesystem::path &folder) {
    std::vector<std::filesystem::path> movies;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; entry != end && !failure;
         entry.increment(failure)) {
        const auto movie = MovieJournal::movieFor(entry->path());
        if (movie && lockMovieJournal(entry->path()))
            movies.push_back(*movie);
    }
    std::ranges::sort(movies);
    return movies;
}

std::expected<MovieSummary, PlatformError> recoverMovie(const std::filesystem::path &movie) {
    const std::filesystem::path journalPath = MovieJournal::pathFor(movie);
    const auto journal = lockMovieJournal(journalPath);
    if (!journal)
        return std::unexpected(journal.error());
    const auto contents = readMovieJournal(*journal);
    if (!contents)
        return removeUnlessItHoldsData(movie, contents.error());
    auto file = DiskFile::openForWriting(movie);
    if (!file && file.error().code == ENOENT)
        return removeEmpty(movie);
    if (!file)
        return std::unexpected(file.error());
    const auto size = file->size();
    if (!size)
        return std::unexpected(size.error());

    MovieAssembler assembler = MovieAssembler::resume(std::move(*file));
    for (const TrackDescription &track : contents->tracks)
        assembler.addTrack(track);
    for (const Chunk &chunk : contents->chunks) {
        if (!isWhole(assembler.file(), *size, contents->synced, chunk))
            break;
        assembler.adoptChunk(chunk.track, chunk.offset, chunk.size, chunk.samples);
    }
    if (assembler.end() == MovieAssembler::headBytes)
        return removeEmpty(movie);
    const auto summary =
        assembler.finish(contents->ends ? *contents->ends : endsByElapsedTime(assembler, contents->elapsed));
    if (!summary)
        return summary;
    if (::unlink(journalPath.c_str()) != 0)
        return std::unexpected(PlatformError::fromErrno("remove journal", errno));
    qCInfo(logCapture, "movie recovered: %.1f s", summary->durationMs / 1000);
    return summary;
}

} // namespace vantrell
