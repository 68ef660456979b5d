// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/MicrophoneMeter.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr double emitInterval = 0.1;

} // namespace

MicrophoneMeter::MicrophoneMeter(Clock &clock, std::function<void(double)> onLevel)
    : m_clock(clock), m_loop(EventLoop::current()),
      m_onLevel(std::make_shared<std::function<void(double)>>(std::move(onLevel))) {}

MicrophoneMeter::~MicrophoneMeter() {
    *m_onLevel = nullptr;
}

void MicrophoneMeter::take(std::span<const float> samples) {
    const double now = m_clock.hostNow();
    {
        std::scoped_lock lock(m_emitMutex);
        if (now - m_lastEmit < emitInterval)
            return;
        m_lastEmit = now;
    }
    m_loop.post([onLevel = m_onLevel, level = peakLevel(samples)] {
        if (*onLevel)
            (*onLevel)(level);
    });
}

double peakLevel(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::abs(sample));
    return std::min(double(peak), 1.0);
}

} // namespace vantrell
