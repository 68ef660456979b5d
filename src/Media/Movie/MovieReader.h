// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace vantrell {

/// What a finished movie holds.
struct MovieFacts {
    struct Track {
        bool isVideo = false;
        /// Pixels; empty for sound.
        PixelSize size;
        std::string name;
        std::int64_t sampleCount = 0;
        double durationMs = 0;
    };

    double durationMs = 0;
    std::vector<Track> tracks;
};

/// Reads the movie's sample tables, not its samples. Blocks on the disk. A damaged file is an error of the
/// domain "movie".
std::expected<MovieFacts, PlatformError> readMovieFacts(const std::filesystem::path &path);

} // namespace vantrell
