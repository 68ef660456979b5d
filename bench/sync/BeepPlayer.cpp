// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "BeepPlayer.h"

#include "Support/HostTime.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantrell::bench {

namespace {

constexpr std::int64_t rate = 48000;
constexpr std::int64_t beepFrames = rate / 20;
constexpr double pitch = 1000;
constexpr double loudness = 0.8;
/// The player judges by what it sees this long before and after.
constexpr double judged = 0.75;

} // namespace

bool BeepPlayer::isSteady() const {
    return m_player.startTime(hostNow() - judged).has_value();
}

std::optional<std::int64_t> BeepPlayer::plan(double hostTime) {
    const auto start = m_player.startTime(hostNow() - judged);
    if (!start)
        return std::nullopt;
    const auto frame = std::int64_t(std::llround((hostTime - *start) * rate));
    const std::scoped_lock lock(m_mutex);
    if (frame < m_written)
        return std::nullopt;
    m_beeps.push_back(frame);
    return frame;
}

std::optional<double> BeepPlayer::heardAt(std::int64_t frame, double planned) const {
    const auto start = m_player.startTime(planned);
    if (!start)
        return std::nullopt;
    return *start + double(frame) / rate;
}

void BeepPlayer::fill(std::int64_t firstFrame, std::span<float> samples) {
    std::ranges::fill(samples, 0.0F);
    const std::scoped_lock lock(m_mutex);
    const std::int64_t end = firstFrame + std::int64_t(samples.size());
    for (const std::int64_t beep : m_beeps)
        for (std::int64_t frame = std::max(beep, firstFrame); frame < std::min(beep + beepFrames, end);
             ++frame)
            samples[std::size_t(frame - firstFrame)] =
                float(loudness * std::sin(2 * std::numbers::pi * pitch * double(frame - beep) / rate));
    std::erase_if(m_beeps, [end](std::int64_t beep) { return beep + beepFrames <= end; });
    m_written = end;
}

} // namespace vantrell::bench
