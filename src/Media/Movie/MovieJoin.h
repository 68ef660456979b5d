// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieWriter.h"
#include "Support/Cancelled.h"
#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <stop_token>
#include <variant>

namespace vantrell {

/// None of the sources has a track.
struct NothingToJoin {};

using MovieJoinError = std::variant<PlatformError, NothingToJoin, Cancelled>;

/// Joins movies end to end into the new file `output` without decoding them: the compressed data is copied in
/// bulk, the tables are made anew. Tracks are matched by kind and position; each movie begins where all of
/// the one before it ends, whether or not a track lasts that long. Differing codec parameters become several
/// sample descriptions of one track. Sound stays with the picture at every joint:
///
/// - Every packet keeps its exact time. At a joint the packets that carry the encoder's padding give way to
///   the next movie's priming, which ends where its sound begins, so that no edit is needed inside.
/// - Players that count samples instead of reading times are never off by more than half a packet either,
///   however many joints there are: so many packets are left in front of each joint.
/// - A movie without the track is filled with silent packets where the codec is ours.
///
/// `output` appears whole or not at all; the sources are only read. Blocks on the disk; the stop is looked at
/// every few megabytes.
std::expected<MovieSummary, MovieJoinError> joinMovies(std::span<const std::filesystem::path> sources,
                                                       const std::filesystem::path &output,
                                                       std::stop_token stop = {});

/// A movie that has its place in a joined one.
struct PlacedMovie {
    std::filesystem::path path;
    /// Seconds into the joined movie, rising from one to the next; absent: where the one before it ends.
    std::optional<double> start;
};

/// The same with places: the last picture before a gap is held through it, and where two movies overlap the
/// later one counts.
std::expected<MovieSummary, MovieJoinError> joinMovies(std::span<const PlacedMovie> sources,
                                                       const std::filesystem::path &output,
                                                       std::stop_token stop = {});

/// Removes what joins that were killed left in `folder`; those of living processes stay.
void removeAbandonedJoins(const std::filesystem::path &folder);

} // namespace vantrell
