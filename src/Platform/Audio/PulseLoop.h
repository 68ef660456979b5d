// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Audio/PulsePointers.h"

#include <chrono>
#include <functional>

namespace vantrell {

/// A thread that runs libpulse's event loop.
class PulseLoop {
public:
    /// Runs at once.
    explicit PulseLoop(const char *threadName);

    pa_mainloop_api *api() const { return pa_threaded_mainloop_get_api(m_loop.get()); }

    /// While it lives nothing runs on the loop's thread. Not on the loop's thread itself, where it is so
    /// anyway.
    class [[nodiscard]] Lock {
    public:
        explicit Lock(const PulseLoop &loop) : m_loop(loop.m_loop.get()) {
            pa_threaded_mainloop_lock(m_loop);
        }
        ~Lock() { pa_threaded_mainloop_unlock(m_loop); }
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        pa_threaded_mainloop *m_loop;
    };

private:
    PulseLoopPtr m_loop;
};

/// Runs an action once, later, on a loop's thread. Locked like all that belongs to a loop.
class PulseTimer {
public:
    PulseTimer(const PulseLoop &loop, std::function<void()> action)
        : m_api(loop.api()), m_action(std::move(action)) {}
    ~PulseTimer() { cancel(); }
    PulseTimer(const PulseTimer &) = delete;
    PulseTimer &operator=(const PulseTimer &) = delete;

    /// Does nothing when it is set already.
    void start(std::chrono::milliseconds delay);
    void cancel();

private:
    pa_mainloop_api *const m_api;
    const std::function<void()> m_action;
    pa_time_event *m_event = nullptr;
};

} // namespace vantrell
