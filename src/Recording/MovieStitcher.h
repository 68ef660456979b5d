// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieJoin.h"
#include "Recording/Failure.h"
#include "Support/Task.h"

#include <QImage>

#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace vantrell {

/// Joins a recording's segments and takes poster frames. Stateless; the work runs on a worker thread.
class MovieStitcher {
public:
    /// Joins the movies in their order, without re-encoding, into a new capture file. The sources stay where
    /// they are, whatever happens; a cancelled or failed join leaves no file behind.
    /// `CaptureError::encodeFailed`: no source has a track.
    static Task<std::expected<std::filesystem::path, Failure>>
    stitch(std::vector<std::filesystem::path> sources, std::stop_token stop);

    /// The same with places, here and now: blocks on the disk.
    static std::expected<std::filesystem::path, Failure> join(std::span<const PlacedMovie> sources,
                                                              std::stop_token stop = {});

    /// The movie's first picture, at most 1024 x 1024 pixels; nothing when it cannot be had.
    static Task<std::optional<QImage>> posterFrame(std::filesystem::path movie, std::stop_token stop);
};

} // namespace vantrell
