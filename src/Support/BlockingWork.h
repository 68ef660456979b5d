// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/OneShot.h"
#include "Support/Task.h"

#include <concepts>
#include <expected>
#include <functional>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <variant>

namespace vantrell {

/// Queues work on the pool of worker threads. Thread-safe.
void postToWorker(std::function<void()> work);

/// What `runBlocking` makes of what the work returns: one result that may also be Cancelled. An error that
/// has no such case becomes a variant that has.
template <typename Value>
struct BlockingResult {
    using Error = Cancelled;
    using Type = std::expected<Value, Error>;
};

template <typename Value, typename WorkError>
struct BlockingResult<std::expected<Value, WorkError>> {
    using Error = std::conditional_t<std::convertible_to<Cancelled, WorkError>, WorkError,
                                     std::variant<WorkError, Cancelled>>;
    using Type = std::expected<Value, Error>;
};

/// Runs `work` (disk, image coding, anything that blocks) on a worker thread and resumes on the caller's
/// thread with its result. When the wait is cancelled, the work itself still runs to its end on what it owns:
/// it must hold copies, never references to the caller's objects.
template <typename Work, typename Value = std::invoke_result_t<Work>>
Task<typename BlockingResult<Value>::Type> runBlocking(Work work, std::stop_token stop) {
    using Error = typename BlockingResult<Value>::Error;
    if constexpr (std::is_void_v<Value>) {
        const OneShot<std::monostate> done;
        postToWorker([done, work = std::move(work)]() mutable {
            work();
            done.resolve({});
        });
        if (!co_await done.wait(stop))
            co_return std::unexpected(Cancelled{});
        co_return std::expected<void, Cancelled>();
    } else {
        const OneShot<Value> done;
        postToWorker([done, work = std::move(work)]() mutable { done.resolve(work()); });
        auto returned = co_await done.wait(stop);
        if (!returned)
            co_return std::unexpected(Error(Cancelled{}));
        if constexpr (std::is_same_v<Error, Cancelled>) {
            co_return std::move(*returned);
        } else {
            if (!*returned)
                co_return std::unexpected(Error(std::move(returned->error())));
            if constexpr (std::is_void_v<typename Value::value_type>)
                co_return std::expected<void, Error>();
            else
                co_return std::move(**returned);
        }
    }
}

} // namespace vantrell
