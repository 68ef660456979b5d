// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell::bench {

/// What a demuxer and decoder that are not ours find in a joined movie.
struct Joints {
    double startSeconds = 0;
    double durationSeconds = 0;
    /// Seconds by which the beep of the last segment comes after its first picture.
    double lastOffset = 0;
    /// Of the same beep, when its samples are counted from the start of the sound.
    double lastCountedOffset = 0;
};

Joints examine(const std::filesystem::path &movie, int segments);

} // namespace vantrell::bench
