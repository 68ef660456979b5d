// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireLoop.h"

#include <QtGlobal>

#include <mutex>

#include <pipewire/log.h>

namespace vantrell {

namespace {

/// The library counts calls, and is not told of the end: its own threads may live on until the process ends.
void startLibrary() {
    static std::once_flag once;
    std::call_once(once, [] {
        pw_init(nullptr, nullptr);
        // A desktop without PipeWire is none of its faults: what fails comes to us as an error.
        if (!qEnvironmentVariableIsSet("PIPEWIRE_DEBUG"))
            pw_log_set_level(SPA_LOG_LEVEL_NONE);
    });
}

} // namespace

PipeWireLoop::PipeWireLoop(const char *threadName) {
    startLibrary();
    m_loop.reset(pw_thread_loop_new(threadName, nullptr));
    if (!m_loop)
        return;
    m_context.reset(pw_context_new(loop(), nullptr, 0));
    pw_thread_loop_start(m_loop.get());
}

PipeWireLoop::~PipeWireLoop() {
    const Lock lock(*this);
    m_context.reset();
}

PipeWireTimer::PipeWireTimer(const PipeWireLoop &loop, std::function<void()> action)
    : m_loop(loop.loop()), m_action(std::move(action)),
      m_source(m_loop ? pw_loop_add_timer(m_loop, runOut, this) : nullptr) {}

PipeWireTimer::~PipeWireTimer() {
    if (m_source)
        pw_loop_destroy_source(m_loop, m_source);
}

void PipeWireTimer::runOut(void *self, std::uint64_t) {
    auto *timer = static_cast<PipeWireTimer *>(self);
    timer->m_isSet = false;
    // A copy: it may destroy the timer.
    const std::function<void()> action = timer->m_action;
    action();
}

void PipeWireTimer::start(std::chrono::milliseconds delay) {
    if (!m_source || std::exchange(m_isSet, true))
        return;
    // A time of zero would switch the timer off.
    const auto time = std::max<std::chrono::nanoseconds>(delay, std::chrono::nanoseconds(1));
    constexpr std::int64_t second = 1'000'000'000;
    timespec due{.tv_sec = time.count() / second, .tv_nsec = time.count() % second};
    pw_loop_update_timer(m_loop, m_source, &due, nullptr, false);
}

void PipeWireTimer::cancel() {
    if (!std::exchange(m_isSet, false))
        return;
    timespec never{};
    pw_loop_update_timer(m_loop, m_source, &never, nullptr, false);
}

} // namespace vantrell
