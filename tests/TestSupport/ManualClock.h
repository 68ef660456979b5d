// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Clock.h"
#include "Support/OneShot.h"
#include "TestSupport/RunTask.h"

#include <vector>

namespace vantrell::testing {

/// A clock that moves only when a test says so. Main thread.
class ManualClock final : public Clock {
public:
    WallTime wallNow() const override { return m_wall; }
    double hostNow() const override { return m_host; }
    Task<std::expected<void, Cancelled>> sleep(std::chrono::milliseconds duration,
                                               std::stop_token stop) override;

    /// Moves both clocks and wakes the sleepers that are due, in the order of their wake times; what they do
    /// in the event loop is done when this returns.
    void advance(std::chrono::milliseconds duration);

    /// The wall clock jumps; nobody who sleeps may notice.
    void setWall(WallTime wall) { m_wall = wall; }

    /// Waits in the event loop until somebody sleeps, then moves to the earliest wake time. Returns how long
    /// that sleeper had asked for, or nothing when nobody slept within `patience` of real time.
    std::optional<std::chrono::milliseconds>
    advanceToNextSleeper(std::chrono::milliseconds patience = std::chrono::seconds(20));

    /// Durations that were asked for, in order.
    const std::vector<std::chrono::milliseconds> &requested() const { return m_requested; }
    int sleeperCount() const { return int(m_sleepers.size()); }

private:
    struct Sleeper {
        int id;
        double due;
        std::chrono::milliseconds duration;
        OneShot<bool> woken;
    };

    void wakeUntil(double host);

    WallTime m_wall = std::chrono::sys_days(std::chrono::year(2026) / 3 / 5) + std::chrono::hours(14);
    double m_host = 1000;
    int m_nextId = 0;
    std::vector<Sleeper> m_sleepers;
    std::vector<std::chrono::milliseconds> m_requested;
};

/// Runs the event loop until the task has ended, moving the clock on whenever somebody sleeps.
template <typename T>
T runTask(Task<T> task, ManualClock &clock) {
    while (!task.isReady()) {
        eventually([&] { return task.isReady() || clock.sleeperCount() > 0; });
        if (!task.isReady())
            clock.advanceToNextSleeper();
    }
    return runTask(std::move(task));
}

} // namespace vantrell::testing
