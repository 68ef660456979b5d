// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseLoop.h"

#include <utility>

namespace vantrell {

PulseLoop::PulseLoop(const char *threadName) : m_loop(pa_threaded_mainloop_new()) {
    pa_threaded_mainloop_set_name(m_loop.get(), threadName);
    pa_threaded_mainloop_start(m_loop.get());
}

void PulseTimer::start(std::chrono::milliseconds delay) {
    if (m_event)
        return;
    timeval due{};
    pa_gettimeofday(&due);
    pa_timeval_add(&due, pa_usec_t(std::chrono::microseconds(delay).count()));
    m_event = m_api->time_new(
        m_api, &due,
        [](pa_mainloop_api *, pa_time_event *, const timeval *, void *self) {
            auto *timer = static_cast<PulseTimer *>(self);
            timer->cancel();
            timer->m_action();
        },
        this);
}

void PulseTimer::cancel() {
    if (pa_time_event *event = std::exchange(m_event, nullptr))
        m_api->time_free(event);
}

} // namespace vantrell
