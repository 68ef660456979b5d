// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Recording/RawEvent.h"
#include "Recording/RecordedSegment.h"
#include "Recording/RecordingOptions.h"
#include "Support/Clock.h"
#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace vantrell {

/// A recording whose movie is whole, and what was noted while it was made.
struct FinishedRecording {
    std::filesystem::path movie;
    RecordingOptions options;
    Clock::WallTime startedAt;
    std::vector<RawEvent> events;
    /// In order, at least one.
    std::vector<RecordedSegment> segments;
    /// When the capture gets its name.
    Clock::WallTime now;
    /// Behind the name: " (partial)".
    std::string nameSuffix;
};

/// Packages the recording as a capture with its sidecar, poster and thumbnail. Blocks: reads and decodes.
std::expected<CaptureResult, PlatformError> describeRecording(const FinishedRecording &recording);

} // namespace vantrell
