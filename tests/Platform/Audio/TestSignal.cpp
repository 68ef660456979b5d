// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSignal.h"

#include <cmath>
#include <cstddef>
#include <random>

namespace vantrell::testing {

namespace {

constexpr int signalRate = 48000;
constexpr int signalSeconds = 10;
/// The noise has next to nothing above 2 kHz: every eighth sample is enough to compare.
constexpr int step = 8;
constexpr int window = signalRate * 2 / 5;
constexpr int reach = signalRate * 3 / 20;

} // namespace

TestSignal::TestSignal(std::uint32_t seed) : m_samples(std::size_t(signalRate) * signalSeconds) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0, 1);
    double first = 0;
    double second = 0;
    for (float &sample : m_samples) {
        first += 0.12 * (noise(random) - first);
        second += 0.12 * (first - second);
        sample = float(std::clamp(second, -0.9, 0.9));
    }
}

TestSignal::Match TestSignal::match(const DecodedMovie::Stream &track, double at, double playedAtZero) const {
    // The piece begins at the first sample that is not before `at`.
    std::size_t begin = 0;
    while (begin < track.sampleTimes.size() && track.sampleTimes[begin] < at)
        ++begin;
    if (begin + window > track.samples.size())
        return {};
    const auto length = std::int64_t(m_samples.size());
    const auto played = std::llround((track.sampleTimes[begin] + playedAtZero) * signalRate);
    Match best;
    for (int lag = -reach; lag <= reach; lag += step) {
        double product = 0;
        double recorded = 0;
        double original = 0;
        for (int i = 0; i < window; i += step) {
            const std::int64_t index = ((played - lag + i) % length + length) % length;
            const double a = track.samples[begin + std::size_t(i)];
            const double b = m_samples[std::size_t(index)];
            product += a * b;
            recorded += a * a;
            original += b * b;
        }
        const double likeness = recorded > 1e-6 ? product / std::sqrt(recorded * original) : 0;
        if (likeness > best.likeness)
            best = {double(lag) / signalRate, likeness};
    }
    return best;
}

} // namespace vantrell::testing
