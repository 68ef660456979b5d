// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireLoop.h"

#include <mutex>

namespace vantrell {

namespace {

/// The library counts calls, and is not told of the end: its own threads may live on until the process ends.
void startLibrary() {
    static std::once_flag once;
    std::call_once(once, [] { pw_init(nullptr, nullptr); });
}

} // namespace

PipeWireLoop::PipeWireLoop(const char *threadName) {
    startLibrary();
    m_loop.reset(pw_thread_loop_new(threadName, nullptr));
    m_context.reset(pw_context_new(loop(), nullptr, 0));
    pw_thread_loop_start(m_loop.get());
}

PipeWireLoop::~PipeWireLoop() {
    const Lock lock(*this);
    m_context.reset();
}

PipeWireTimer::PipeWireTimer(const PipeWireLoop &loop, std::function<void()> action)
    : m_loop(loop.loop()), m_action(std::move(action)),
      m_source(pw_loop_add_timer(
          m_loop,
          [](void *self, std::uint64_t) {
              auto *timer = static_cast<PipeWireTimer *>(self);
              timer->m_isSet = false;
              // A copy: it may destroy the timer.
              const std::function<void()> action = timer->m_action;
              action();
          },
          this)) {}

PipeWireTimer::~PipeWireTimer() {
    pw_loop_destroy_source(m_loop, m_source);
}

void PipeWireTimer::start(std::chrono::milliseconds delay) {
    if (std::exchange(m_isSet, true))
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
