// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Scene.h"

#include <filesystem>
#include <map>
#include <string>

namespace vantrell::bench {

/// What a movie shows of a scene.
struct MovieFigures {
    /// Of the source's frames, those that are in the movie.
    double capturedShare = 0;
    /// Mean luma SSIM of a sample of them against what was drawn.
    double ssim = 0;
    /// The lowest of what had changed within a second before, among the same sample.
    double lowestFreshSsim = 1;
    /// Milliseconds: 95th percentile of the time stamps' distance from the source's clock, after the offset.
    double timeError95 = 0;
    double driftPpm = 0;
    /// Seconds between two captured frames of the source.
    double longestGap = 0;
    double megabytes = 0;
    double duration = 0;
};

/// `shown` is when each frame was drawn.
MovieFigures measureMovie(const std::filesystem::path &movie, const std::string &scene, PixelSize screen,
                          const std::map<int, double> &shown);

} // namespace vantrell::bench
