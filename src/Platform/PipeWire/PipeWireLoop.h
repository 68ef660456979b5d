// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWirePointers.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

namespace vantrell {

/// A thread that runs libpipewire's event loop; none where the library's parts are not installed, and then
/// nothing ever runs on it.
class PipeWireLoop {
public:
    /// Runs at once.
    explicit PipeWireLoop(const char *threadName);
    ~PipeWireLoop();
    PipeWireLoop(const PipeWireLoop &) = delete;
    PipeWireLoop &operator=(const PipeWireLoop &) = delete;

    /// Null where there is none.
    pw_loop *loop() const { return m_loop ? pw_thread_loop_get_loop(m_loop.get()) : nullptr; }
    /// What connections are made in; null where the library's parts are not installed.
    pw_context *context() const { return m_context.get(); }

    /// While it lives nothing runs on the loop's thread. Harmless on the loop's thread itself, where it is so
    /// anyway.
    class [[nodiscard]] Lock {
    public:
        explicit Lock(const PipeWireLoop &loop) : m_loop(loop.m_loop.get()) {
            if (m_loop)
                pw_thread_loop_lock(m_loop);
        }
        ~Lock() {
            if (m_loop)
                pw_thread_loop_unlock(m_loop);
        }
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        pw_thread_loop *m_loop;
    };

private:
    PipeWireThreadLoopPtr m_loop;
    PipeWireContextPtr m_context;
};

/// Runs an action once, later, on a loop's thread; never where there is none. Locked like all that belongs to
/// a loop. The action may destroy the timer.
class PipeWireTimer {
public:
    PipeWireTimer(const PipeWireLoop &loop, std::function<void()> action);
    ~PipeWireTimer();
    PipeWireTimer(const PipeWireTimer &) = delete;
    PipeWireTimer &operator=(const PipeWireTimer &) = delete;

    /// Does nothing when it is set already. Without a delay: as soon as the loop has nothing else to do.
    void start(std::chrono::milliseconds delay = {});
    void cancel();

private:
    static void runOut(void *self, std::uint64_t);

    pw_loop *const m_loop;
    const std::function<void()> m_action;
    spa_source *m_source;
    bool m_isSet = false;
};

} // namespace vantrell
