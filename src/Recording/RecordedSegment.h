// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell {

/// One stretch of a recording between start or resume and pause or stop.
struct RecordedSegment {
    std::filesystem::path fileURL;
    /// Host time of the first frame, or of the capture's start when no frame came. Seconds.
    double anchorHostTime = 0;
    /// Duration of the segment's movie.
    double durationMs = 0;
};

} // namespace vantrell
