// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieHeader.h"
#include "Media/Movie/TrackDescription.h"
#include "Support/DiskFile.h"

#include <cstdint>
#include <expected>
#include <vector>

namespace vantrell {

/// The sample tables of a QuickTime or MP4 movie, expanded.
struct MovieIndex {
    struct Sample {
        std::uint64_t offset = 0;
        std::uint32_t size = 0;
        /// Media ticks.
        std::uint32_t duration = 0;
        /// Media ticks from the media's beginning.
        std::int64_t dts = 0;
        std::int32_t compositionOffset = 0;
        /// Counted from 1.
        std::uint16_t description = 1;
        bool isKey = true;
    };

    struct Track {
        /// `priming` and `samplesPerPacket` are not known to a file: 0.
        TrackDescription description;
        std::vector<Sample> samples;
        /// Durations in ticks of the movie's `timeScale`. None when the file has no list: all is shown.
        std::vector<Edit> edits;
        /// Media ticks.
        std::int64_t mediaDuration = 0;
    };

    std::uint32_t timeScale = 0;
    /// Ticks of `timeScale`: the longest track.
    std::int64_t duration = 0;
    /// Picture and sound tracks in the file's order; others are left out.
    std::vector<Track> tracks;
};

/// Reads the tables. They are believed only as far as they agree with each other and with the file's size;
/// anything else is an error of the domain "movie". Blocks on the disk.
std::expected<MovieIndex, PlatformError> readMovieIndex(const DiskFile &file);

} // namespace vantrell
