// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/StreamClock.h"

#include "Platform/AudioSource.h"

#include <algorithm>
#include <span>

namespace vantrell {

namespace {

/// Later than any cycle: either the machine was busy or the stream paused. The former does not happen this
/// many times in a row.
constexpr double suspiciousDelay = 0.060;
constexpr int certainAfter = 3;

} // namespace

bool StreamClock::observe(std::int64_t frame, double hostTime) {
    const double observed = hostTime - double(frame) / audioSampleRate;
    m_late = isSet() && observed > offset() + suspiciousDelay ? m_late + 1 : 0;
    const bool hasPaused = m_late == certainAfter;
    if (hasPaused)
        reset();
    m_offsets[m_next] = observed;
    m_next = (m_next + 1) % remembered;
    m_count = std::min(m_count + 1, remembered);
    return hasPaused;
}

double StreamClock::timeOf(std::int64_t frame) const {
    return offset() + double(frame) / audioSampleRate;
}

double StreamClock::offset() const {
    return *std::ranges::min_element(std::span(m_offsets).first(m_count));
}

} // namespace vantrell
