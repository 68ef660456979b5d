// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/Task.h"

#include <chrono>
#include <expected>
#include <stop_token>

namespace vantrell {

/// Time as a port. Main thread for `sleep`; the two readings are thread-safe.
class Clock {
public:
    using WallTime = std::chrono::system_clock::time_point;

    virtual ~Clock() = default;

    virtual WallTime wallNow() const = 0;

    /// Seconds of CLOCK_MONOTONIC: the clock of every frame, sample and input event.
    virtual double hostNow() const = 0;

    /// Waits on the monotonic clock.
    virtual Task<std::expected<void, Cancelled>> sleep(std::chrono::milliseconds duration,
                                                       std::stop_token stop) = 0;
};

} // namespace vantrell
