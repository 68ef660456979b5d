// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Movie/DecodedMovie.h"

#include <cstdint>
#include <vector>

namespace vantrell::testing {

/// Ten seconds of noise that is like itself at no other time, so that a piece of it tells where it is from.
class TestSignal {
public:
    explicit TestSignal(std::uint32_t seed);

    const std::vector<float> &samples() const { return m_samples; }

    struct Match {
        /// Seconds by which the recorded piece comes late (negative: early).
        double offset = 0;
        /// 1 for the very signal, about 0 for another.
        double likeness = 0;
    };

    /// Compares what a track holds in the 0.4 s from `at` with what was played then, up to 0.15 s to either
    /// side. `playedAtZero`: how long the signal had been playing at the movie's zero.
    Match match(const DecodedMovie::Stream &track, double at, double playedAtZero) const;

private:
    std::vector<float> m_samples;
};

} // namespace vantrell::testing
