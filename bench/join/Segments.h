// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <vector>

namespace vantrell::bench {

inline constexpr int segmentSeconds = 60;
inline constexpr int picturesPerSecond = 60;

/// Makes `count` recorder's segments of a minute, 1920 x 1080 at 60 a second with two sounds, about 20 MB
/// each, all the same: each begins with a beep. Needs the ffmpeg command to draw them. Exits on failure.
std::vector<std::filesystem::path> makeSegments(const std::filesystem::path &folder, int count);

} // namespace vantrell::bench
