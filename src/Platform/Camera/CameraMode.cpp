// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/CameraMode.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace vantrell {

namespace {

constexpr double wantedRate = 30;
/// Below it a face moves in jerks.
constexpr double fluentRate = 24;
constexpr PixelSize largestSize{1920, 1080};

auto rank(const CameraMode &mode) {
    const bool fits = mode.size.width <= largestSize.width && mode.size.height <= largestSize.height;
    const int area = mode.size.width * mode.size.height;
    const bool isFluent = mode.framesPerSecond >= fluentRate;
    return std::tuple(fits, isFluent, fits ? area : -area,
                      // Of two fluent ones that with less to throw away, of two slow ones the faster.
                      -std::abs(mode.framesPerSecond - wantedRate),
                      // In the order of the declaration: from ready pixels to what takes most to decode.
                      -int(mode.format));
}

} // namespace

double bestCameraRate(std::span<const double> rates) {
    const auto best = std::ranges::min_element(
        rates, {}, [](double rate) { return std::pair(std::abs(rate - wantedRate), -rate); });
    return best == rates.end() ? 0 : *best;
}

std::optional<CameraMode> bestCameraMode(std::span<const CameraMode> modes) {
    const auto best = std::ranges::max_element(modes, {}, rank);
    return best == modes.end() ? std::nullopt : std::optional(*best);
}

} // namespace vantrell
