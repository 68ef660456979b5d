// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Recording/Failure.h"
#include "Recording/RecordedSegment.h"
#include "Support/Clock.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// What a camera recorded beside a screen, before it is one movie.
struct CameraLayer {
    /// Its files with their anchors, in order; how long they last is looked up.
    std::vector<RecordedSegment> files;
    /// The stretches that the screen's movie consists of.
    std::vector<RecordedSegment> screen;
    Clock::WallTime startedAt;
    /// When the capture gets its name.
    Clock::WallTime now;
    std::string nameSuffix;
    std::optional<std::string> recordingId;
    /// The recording's journal, which is told of the movie before the files go.
    std::filesystem::path journal;
};

/// Makes one movie of the files, in step with the screen's, and packages it. One file is taken as it is,
/// several are joined and then deleted. None when nothing was recorded. After an error the files are there
/// still. Blocks: reads, copies and decodes.
std::expected<std::optional<CaptureResult>, Failure> makeCameraCapture(CameraLayer layer);

/// The same of a movie that was joined already, which begins at `anchorHostTime`.
std::expected<std::optional<CaptureResult>, Failure>
describeCameraMovie(const std::filesystem::path &movie, double anchorHostTime, const CameraLayer &layer);

} // namespace vantrell
