// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/EventLoop.h"

#include <coroutine>
#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace vantrell {

/// A value that arrives once and that one coroutine waits for: the primitive under every cancellable wait.
///
/// `resolve` may be called on any thread and before anybody waits (the value is then banked); results after
/// the first are ignored. The waiter resumes on the thread it waited on, from that thread's event loop.
/// When the stop token of the wait is triggered, the waiter resumes inside `request_stop`, so that a
/// TaskScope that is being destroyed sees its tasks end before it returns; the stop must therefore be
/// requested on the waiter's own thread.
template <typename T>
class OneShot {
public:
    OneShot() : m_state(std::make_shared<State>()) {}

    /// Thread-safe. True when this call delivered the result.
    bool resolve(T value) const {
        std::unique_lock lock(m_state->mutex);
        if (m_state->settled)
            return false;
        m_state->settled = true;
        m_state->value = std::move(value);
        if (!m_state->waiter)
            return true;
        const EventLoop loop = m_state->loop;
        lock.unlock();
        loop.post([state = m_state] { state->resume(); });
        return true;
    }

    /// Thread-safe. A result has arrived or the wait was cancelled.
    bool settled() const {
        std::scoped_lock lock(m_state->mutex);
        return m_state->settled;
    }

    /// Waits for the value. At most one wait per OneShot.
    [[nodiscard]] auto wait(std::stop_token stop) const { return Awaiter{m_state, std::move(stop), {}}; }

private:
    struct State {
        std::mutex mutex;
        bool settled = false;
        std::optional<T> value;
        std::coroutine_handle<> waiter;
        EventLoop loop;

        /// Resumes the waiter unless a cancellation did so before. Waiter's thread.
        void resume() {
            std::unique_lock lock(mutex);
            const std::coroutine_handle<> handle = std::exchange(waiter, nullptr);
            lock.unlock();
            if (handle)
                handle.resume();
        }

        void cancel() {
            {
                std::scoped_lock lock(mutex);
                settled = true;
                value.reset();
            }
            resume();
        }
    };

    struct OnStop {
        std::shared_ptr<State> state;
        void operator()() const { std::shared_ptr<State>(state)->cancel(); }
    };

    struct Awaiter {
        std::shared_ptr<State> state;
        std::stop_token stop;
        std::optional<std::stop_callback<OnStop>> registration;

        bool await_ready() const {
            if (stop.stop_requested()) {
                std::scoped_lock lock(state->mutex);
                state->settled = true;
                state->value.reset();
                return true;
            }
            std::scoped_lock lock(state->mutex);
            return state->settled;
        }

        bool await_suspend(std::coroutine_handle<> handle) {
            {
                std::scoped_lock lock(state->mutex);
                if (state->settled)
                    return false;
                state->loop = EventLoop::current();
                state->waiter = handle;
            }
            // Stops are requested on this thread only, so none can come between the check above and here.
            registration.emplace(stop, OnStop{state});
            return true;
        }

        std::expected<T, Cancelled> await_resume() {
            registration.reset();
            std::scoped_lock lock(state->mutex);
            if (!state->value)
                return std::unexpected(Cancelled{});
            return std::move(*state->value);
        }
    };

    std::shared_ptr<State> m_state;
};

} // namespace vantrell
