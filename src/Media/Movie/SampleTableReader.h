// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieIndex.h"

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

namespace vantrell {

/// The contents of a track's sample table boxes; empty where the file has none.
struct SampleBoxes {
    std::span<const std::uint8_t> durations;  ///< stts
    std::span<const std::uint8_t> offsets;    ///< ctts
    std::span<const std::uint8_t> keys;       ///< stss
    std::span<const std::uint8_t> chunkRuns;  ///< stsc
    std::span<const std::uint8_t> sizes;      ///< stsz
    std::span<const std::uint8_t> chunks;     ///< stco
    std::span<const std::uint8_t> wideChunks; ///< co64
};

/// Expands the tables. Each sample lies within `fileSize` and names one of `descriptionCount` descriptions.
std::expected<std::vector<MovieIndex::Sample>, PlatformError>
readSamples(const SampleBoxes &boxes, std::size_t descriptionCount, std::uint64_t fileSize);

} // namespace vantrell
