// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vantrell::bench {

/// What a movie shows and what is heard in it, in seconds of the movie.
struct MovieSigns {
    struct Track {
        std::string name;
        /// Where sound begins after silence, in order.
        std::vector<double> onsets;
    };

    double durationSeconds = 0;
    /// Number of each flash whose beginning the movie has, and when it is.
    std::map<std::uint32_t, double> flashes;
    std::vector<Track> tracks;
};

/// Reads a movie with FFmpeg. Without tracks when it cannot be read.
MovieSigns readSigns(const std::filesystem::path &movie);

} // namespace vantrell::bench
