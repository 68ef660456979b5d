// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/OneShot.h"
#include "Support/Task.h"

#include <expected>
#include <functional>
#include <stop_token>
#include <type_traits>

namespace vantrell {

/// Queues work on the pool of worker threads. Thread-safe.
void postToWorker(std::function<void()> work);

/// Runs `work` (disk, image coding, anything that blocks) on a worker thread and resumes on the caller's
/// thread with its result. When the wait is cancelled, the work itself still runs to its end on what it owns:
/// it must hold copies, never references to the caller's objects.
template <typename Work, typename Result = std::invoke_result_t<Work>>
Task<std::expected<Result, Cancelled>> runBlocking(Work work, std::stop_token stop) {
    const OneShot<Result> done;
    postToWorker([done, work = std::move(work)]() mutable { done.resolve(work()); });
    co_return co_await done.wait(stop);
}

} // namespace vantrell
