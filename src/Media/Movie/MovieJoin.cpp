// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieJoin.h"

#include "Media/Movie/FileCopy.h"
#include "Media/Movie/JoinedTrack.h"
#include "Media/Movie/MovieAssembler.h"
#include "Media/Movie/MovieIndex.h"
#include "Media/Movie/SilentPacket.h"
#include "Support/Log.h"
#include "Support/ScopeExit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <limits>

#include <unistd.h>

namespace vantrell {

namespace {

constexpr std::string_view partSuffix = ".part";

struct ByteRange {
    std::uint64_t begin = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t end = 0;

    std::uint64_t size() const { return end > begin ? end - begin : 0; }
};

/// Everything from the first sample to the last. In a recorder's file nothing else lies between.
ByteRange dataRange(const MovieIndex &index) {
    ByteRange range;
    for (const MovieIndex::Track &track : index.tracks)
        for (const MovieIndex::Sample &sample : track.samples) {
            range.begin = std::min(range.begin, sample.offset);
            range.end = std::max(range.end, sample.offset + sample.size);
        }
    return range;
}

class MovieJoiner {
public:
    explicit MovieJoiner(MovieAssembler movie) : m_movie(std::move(movie)) {}

    std::expected<void, MovieJoinError> add(const PlacedMovie &placed, const std::stop_token &stop);
    std::expected<MovieSummary, MovieJoinError> finish();

private:
    JoinedTrack &trackFor(const MovieIndex::Track &source, std::size_t position);
    std::expected<void, PlatformError> closeGap(JoinedTrack &joined, const MovieIndex::Track &source,
                                                std::uint32_t timeScale);

    MovieAssembler m_movie;
    std::uint64_t m_end = MovieAssembler::headBytes;
    // Movie ticks: where the next source begins.
    std::int64_t m_cursor = 0;
    std::deque<JoinedTrack> m_tracks;
};

JoinedTrack &MovieJoiner::trackFor(const MovieIndex::Track &source, std::size_t position) {
    for (JoinedTrack &track : m_tracks)
        if (track.kind() == source.description.kind && position-- == 0)
            return track;
    return m_tracks.emplace_back(source.description);
}

std::expected<void, PlatformError> MovieJoiner::closeGap(JoinedTrack &joined, const MovieIndex::Track &source,
                                                         std::uint32_t timeScale) {
    std::expected<void, PlatformError> written;
    joined.prepare(source, timeScale, m_cursor,
                   [&](std::size_t packets) -> std::optional<JoinedTrack::Silence> {
                       const std::vector<std::uint8_t> packet = makeSilentPacket(joined.description());
                       std::vector<std::uint8_t> data;
                       data.reserve(packets * packet.size());
                       for (; packets > 0; --packets)
                           data.insert(data.end(), packet.begin(), packet.end());
                       written = m_movie.file().writeAt(m_end, data);
                       if (data.empty() || !written)
                           return std::nullopt;
                       return JoinedTrack::Silence{std::exchange(m_end, m_end + data.size()),
                                                   std::uint32_t(packet.size())};
                   });
    return written;
}

std::expected<void, MovieJoinError> MovieJoiner::add(const PlacedMovie &placed, const std::stop_token &stop) {
    const auto file = DiskFile::openForReading(placed.path);
    if (!file)
        return std::unexpected(file.error());
    const auto index = readMovieIndex(*file);
    if (!index)
        return std::unexpected(index.error());

    if (placed.start)
        m_cursor = std::llround(*placed.start * movieTimeScale);
    std::vector<std::pair<const MovieIndex::Track *, JoinedTrack *>> pairs;
    for (const TrackKind kind : {TrackKind::video, TrackKind::audio}) {
        std::size_t position = 0;
        for (const MovieIndex::Track &track : index->tracks)
            if (track.description.kind == kind)
                pairs.emplace_back(&track, &trackFor(track, position++));
    }
    for (const auto &[source, joined] : pairs)
        if (const auto closed = closeGap(*joined, *source, index->timeScale); !closed)
            return std::unexpected(closed.error());

    const ByteRange range = dataRange(*index);
    if (range.size() > 0) {
        const auto copied = copyBytes(*file, range.begin, m_movie.file(), m_end, range.size(), stop);
        if (!copied)
            return std::unexpected(
                std::visit([](auto error) -> MovieJoinError { return error; }, copied.error()));
        for (const auto &[source, joined] : pairs)
            joined->append(*source, index->timeScale, m_cursor, m_end - range.begin);
        m_end += range.size();
    }
    m_cursor += rescale(index->duration, index->timeScale, movieTimeScale);
    return {};
}

std::expected<MovieSummary, MovieJoinError> MovieJoiner::finish() {
    if (m_tracks.empty())
        return std::unexpected(NothingToJoin{});
    std::vector<std::vector<Edit>> edits;
    for (const JoinedTrack &track : m_tracks)
        edits.push_back(track.finish(m_movie));
    const auto summary = m_movie.finishWithEdits(std::move(edits));
    if (!summary)
        return std::unexpected(summary.error());
    return *summary;
}

} // namespace

std::expected<MovieSummary, MovieJoinError> joinMovies(std::span<const std::filesystem::path> sources,
                                                       const std::filesystem::path &output,
                                                       std::stop_token stop) {
    std::vector<PlacedMovie> placed;
    for (const std::filesystem::path &source : sources)
        placed.push_back({source, std::nullopt});
    return joinMovies(placed, output, std::move(stop));
}

std::expected<MovieSummary, MovieJoinError>
joinMovies(std::span<const PlacedMovie> sources, const std::filesystem::path &output, std::stop_token stop) {
    // Under another name until it is whole: a movie that a crash left behind is nobody's result.
    const std::filesystem::path temporary = output.string() + std::string(partSuffix);
    ::unlink(temporary.c_str());
    auto file = DiskFile::create(temporary);
    if (!file)
        return std::unexpected(file.error());
    if (const auto locked = file->lock(); !locked)
        return std::unexpected(locked.error());
    bool isKept = false;
    const ScopeExit removeFailed([&] {
        if (!isKept)
            ::unlink(temporary.c_str());
    });
    auto movie = MovieAssembler::begin(std::move(*file));
    if (!movie)
        return std::unexpected(movie.error());
    MovieJoiner joiner(std::move(*movie));
    for (const PlacedMovie &source : sources)
        if (const auto added = joiner.add(source, stop); !added)
            return std::unexpected(added.error());
    const auto summary = joiner.finish();
    if (!summary)
        return summary;
    if (stop.stop_requested())
        return std::unexpected(Cancelled{});
    if (::rename(temporary.c_str(), output.c_str()) != 0)
        return std::unexpected(PlatformError::fromErrno("rename", errno));
    isKept = true;
    // The movie is whole and in its place; only a power cut in the next seconds could still undo the name.
    if (const auto synced = syncFolder(output.parent_path()); !synced)
        qCWarning(logCapture, "joined movie's folder not synchronised: %s", synced.error().message.c_str());
    return summary;
}

void removeAbandonedJoins(const std::filesystem::path &folder) {
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; entry != end && !failure;
         entry.increment(failure)) {
        const std::filesystem::path &path = entry->path();
        if (path.extension() != partSuffix || path.stem().extension() != ".mov")
            continue;
        const auto file = DiskFile::openForWriting(path);
        if (file && file->lock())
            ::unlink(path.c_str());
    }
}

} // namespace vantrell
