// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/SampleTable.h"
#include "Media/Movie/TrackDescription.h"

#include <cstdint>
#include <span>
#include <vector>

namespace vantrell {

/// Ticks per second of movie durations and edits: the picture's own, so that its times convert exactly.
inline constexpr std::uint32_t movieTimeScale = 90000;

/// A stretch of the movie's time line: `duration` in movie ticks shows the track's media from `mediaTime` in
/// media ticks, or nothing when `mediaTime` is `emptyEdit`.
struct Edit {
    std::int64_t duration = 0;
    std::int64_t mediaTime = 0;
    bool operator==(const Edit &) const = default;
};
inline constexpr std::int64_t emptyEdit = -1;

/// A track ready to be written.
struct TrackLayout {
    const TrackDescription *description = nullptr;
    const SampleTable *samples = nullptr;
    std::vector<Edit> edits;
};

/// `value` from one time scale to another, rounded to the nearest tick.
std::int64_t rescale(std::int64_t value, std::uint32_t from, std::uint32_t to);

/// The edits that show a track from the movie's zero to `end` (media ticks from the movie's zero): what the
/// samples hold before zero and the priming are skipped, a later start is an empty stretch.
std::vector<Edit> presentationEdits(const TrackDescription &track, const SampleTable &samples,
                                    std::int64_t end);

/// Movie ticks that all of the edits take.
std::int64_t editsDuration(std::span<const Edit> edits);

/// The moov box. Tracks without samples are left out.
std::vector<std::uint8_t> buildMovieHeader(std::span<const TrackLayout> tracks);

/// An upper bound of the size of such a box.
std::uint64_t movieHeaderBytes(std::span<const TrackLayout> tracks);

} // namespace vantrell
