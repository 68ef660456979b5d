// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/OneShot.h"
#include "Support/Task.h"

#include <atomic>
#include <expected>
#include <stop_token>
#include <thread>
#include <type_traits>

namespace vantrell {

/// Calls that may never return: a display, a disk or a driver that hangs keeps its thread and nobody else. A
/// process with such threads left ends with `_Exit`.
class Probe {
public:
    /// Runs `work` on a thread of its own and resumes on the caller's thread. When the wait is cancelled, the
    /// work is left behind: it must hold copies, never references to the caller's objects.
    template <typename Work, typename Value = std::invoke_result_t<Work>>
    static Task<std::expected<Value, Cancelled>> run(Work work, std::stop_token stop) {
        const OneShot<Value> done;
        ++running;
        std::thread([done, work = std::move(work)]() mutable {
            done.resolve(work());
            --running;
        }).detach();
        co_return co_await done.wait(stop);
    }

    /// Threads that have not come back. Thread-safe.
    static int left() { return running; }

private:
    static inline std::atomic<int> running = 0;
};

} // namespace vantrell
