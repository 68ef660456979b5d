// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "StallMeter.h"

#include <algorithm>
#include <cstdint>
#include <fstream>

using namespace std::chrono_literals;

namespace vantrell::testing {

StallMeter::Reading StallMeter::Reading::now() {
    std::uint64_t ran = 0;
    std::uint64_t ready = 0;
    std::ifstream("/proc/thread-self/schedstat") >> ran >> ready;
    return {std::chrono::steady_clock::now().time_since_epoch(), std::chrono::nanoseconds(ready)};
}

StallMeter::StallMeter() : m_last(Reading::now()) {
    m_heart.setTimerType(Qt::PreciseTimer);
    connect(&m_heart, &QTimer::timeout, this, &StallMeter::beat);
    m_heart.start(1ms);
}

std::chrono::milliseconds StallMeter::longest() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(m_longest);
}

void StallMeter::beat() {
    const Reading now = Reading::now();
    m_longest = std::max(m_longest, now.wall - m_last.wall - (now.ready - m_last.ready) - 1ms);
    m_last = now;
    ++m_beats;
}

} // namespace vantrell::testing
