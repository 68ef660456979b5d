// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Recording/RecordedSegment.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace vantrell {

/// What a stopped recording yields.
struct RecordingStopOutcome {
    CaptureResult capture;
    /// What it was joined from, in order.
    std::vector<RecordedSegment> segments;
    /// The last segment was lost and only the earlier ones were kept.
    bool isPartial = false;
    /// Changes of the screen that got no frame because the machine could not keep up.
    std::int64_t droppedFrames = 0;
    /// Why the sound that was wanted is missing, from some segment on or altogether.
    std::optional<PlatformError> soundProblem;
    /// The lost segment's movie is there, or a slow disk is still writing it: it has a journal of its own
    /// now, and RecordingRecovery makes a capture of it.
    bool isRestRecoverable = false;
    /// What would recover the recording; whoever has taken the capture over removes it
    /// (RecordingRecovery::forget).
    std::filesystem::path journal;
};

} // namespace vantrell
