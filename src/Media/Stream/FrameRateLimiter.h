// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Keeps the mean frame rate below a limit and lets short bursts pass: a strict minimum spacing would lose
/// frames of a source that runs at the limit and jitters. Times are host times. Not thread-safe.
class FrameRateLimiter {
public:
    explicit FrameRateLimiter(double framesPerSecond) : m_interval(1 / framesPerSecond) {}

    /// The earliest time at which another frame may be taken.
    double nextAllowed() const { return m_full - burst * m_interval; }

    void frameTaken(double now);

private:
    static constexpr double burst = 2;

    double m_interval;
    /// When the bucket, which each frame fills by one interval, will have run dry.
    double m_full = 0;
};

} // namespace vantrell
