// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieIndex.h"
#include "Media/Movie/MovieWriter.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A movie of one picture and two sound tracks whose samples are numbered noise: whatever was recovered can
/// be compared byte by byte, without decoding.
class SyntheticMovie {
public:
    static constexpr int trackCount = 3;
    static constexpr int pictureTicks = 1500;
    static constexpr int packetTicks = 1024;

    static std::vector<std::uint8_t> sample(int track, int number);

    static std::vector<TrackId> addTracks(MovieWriter &writer);
    static std::expected<void, PlatformError> append(MovieWriter &writer, TrackId track, int number);

    /// How many samples of each track the movie at `path` holds.
    struct Contents {
        /// Empty when the movie is sound and holds nothing but the first samples of each track, unharmed.
        std::string fault;
        int counts[trackCount] = {};
        double durationMs = 0;
    };
    static Contents read(const std::filesystem::path &path);
};

} // namespace vantrell::testing
