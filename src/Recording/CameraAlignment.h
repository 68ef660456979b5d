// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieJoin.h"
#include "Recording/RecordedSegment.h"

#include <span>
#include <vector>

namespace vantrell {

/// Where the files of a camera lie in its one movie.
struct CameraAlignment {
    std::vector<PlacedMovie> movies;
    /// Host time of the movie's beginning in the first stretch of the screen's recording: a moment `t` of the
    /// screen's movie is the moment `t` - (this - the screen's anchor) of the camera's.
    double anchorHostTime = 0;
};

/// Camera and screen start and stop at other moments in each stretch of a recording, by what a camera needs
/// to begin. So that both movies stay in step all along, each file of the camera gets its place by the
/// stretch of the screen during which it was made: a picture is as far from that stretch's beginning as it
/// was in life. Between two files the last picture is held. Files that belong to no stretch of the screen's
/// movie, since that was lost, are left out; without any stretch of the screen all follow one another.
///
/// `camera` and `screen` are in order and last longer than nothing.
CameraAlignment alignToScreen(std::span<const RecordedSegment> camera,
                              std::span<const RecordedSegment> screen);

} // namespace vantrell
