// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieReader.h"

#include "Media/Movie/MovieIndex.h"

namespace vantrell {

std::expected<MovieFacts, PlatformError> readMovieFacts(const std::filesystem::path &path) {
    const auto file = DiskFile::openForReading(path);
    if (!file)
        return std::unexpected(file.error());
    const auto index = readMovieIndex(*file);
    if (!index)
        return std::unexpected(index.error());
    MovieFacts facts;
    facts.durationMs = double(index->duration) * 1000 / index->timeScale;
    for (const MovieIndex::Track &track : index->tracks) {
        const TrackDescription &description = track.description;
        const double mediaSeconds = double(track.mediaDuration) / description.timeScale;
        const double editedSeconds = double(editsDuration(track.edits)) / index->timeScale;
        facts.tracks.push_back({description.kind == TrackKind::video, description.size, description.name,
                                std::int64_t(track.samples.size()),
                                1000 * (track.edits.empty() ? mediaSeconds : editedSeconds)});
    }
    return facts;
}

} // namespace vantrell
