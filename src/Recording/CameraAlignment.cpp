// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/CameraAlignment.h"

#include <algorithm>
#include <optional>

namespace vantrell {

namespace {

double endOf(const RecordedSegment &segment) {
    return segment.anchorHostTime + segment.durationMs / 1000;
}

/// Seconds in the screen's movie at which the file begins; negative when it began before the screen.
std::optional<double> placeBeside(const RecordedSegment &file, std::span<const RecordedSegment> screen) {
    std::optional<double> place;
    double longest = 0;
    double before = 0;
    for (const RecordedSegment &stretch : screen) {
        const double shared =
            std::min(endOf(file), endOf(stretch)) - std::max(file.anchorHostTime, stretch.anchorHostTime);
        if (shared > longest) {
            longest = shared;
            place = before + file.anchorHostTime - stretch.anchorHostTime;
        }
        before += stretch.durationMs / 1000;
    }
    return place;
}

} // namespace

CameraAlignment alignToScreen(std::span<const RecordedSegment> camera,
                              std::span<const RecordedSegment> screen) {
    CameraAlignment alignment;
    std::optional<double> beginning;
    for (const RecordedSegment &file : camera) {
        const std::optional<double> place = placeBeside(file, screen);
        if (!place)
            continue;
        if (!beginning) {
            beginning = *place;
            alignment.anchorHostTime = screen.front().anchorHostTime + *place;
        }
        alignment.movies.push_back({file.fileURL, *place - *beginning});
    }
    if (!alignment.movies.empty() || camera.empty())
        return alignment;
    alignment.anchorHostTime = camera.front().anchorHostTime;
    for (const RecordedSegment &file : camera)
        alignment.movies.push_back({file.fileURL, std::nullopt});
    return alignment;
}

} // namespace vantrell
