// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/AudioSynchronizer.h"

#include "Platform/AudioSource.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantrell {

namespace {

/// More than 20 ms against the picture is seen, so what comes near is not left to the stretching, which takes
/// a second for every 3 ms. But it must have lasted: a single late time stamp is no reason to cut into the
/// sound.
constexpr double noticeableSlip = 0.015;
constexpr double slipPatience = 0.5;
/// No time stamp is wrong by this much: the device stopped for a while.
constexpr double certainJump = 0.100;

} // namespace

std::expected<AudioSynchronizer, PlatformError> AudioSynchronizer::create(Sink sink) {
    auto stretcher = SoundStretcher::create();
    if (!stretcher)
        return std::unexpected(stretcher.error());
    return AudioSynchronizer(std::move(sink), std::move(*stretcher));
}

std::expected<void, PlatformError> AudioSynchronizer::push(std::span<const float> samples, double hostTime,
                                                           bool startsAnew) {
    const double seconds = double(std::int64_t(samples.size()) / SoundStretcher::channels) / audioSampleRate;
    const double belongs = framesSinceEpoch(hostTime);
    const double slip = (belongs - position()) / audioSampleRate;
    if (m_isFlowing && !startsAnew && !hasJumped(slip, seconds)) {
        m_stretcher.setStretch(m_drift.update(slip, seconds));
    } else {
        if (const auto drained = drain(); !drained)
            return drained;
        if (startsAnew)
            m_drift.reset();
        m_slippedSeconds = 0;
        m_stretcher.setStretch(m_drift.stretch());
        const auto missing = std::int64_t(std::llround(belongs)) - m_written;
        if (missing > 0) {
            if (const auto filled = writeSilence(missing); !filled)
                return filled;
        } else {
            // From before the epoch, or for a time that is filled already.
            samples =
                samples.subspan(std::min(samples.size(), std::size_t(-missing * SoundStretcher::channels)));
        }
        m_isFlowing = !samples.empty();
        if (!m_isFlowing)
            return {};
    }
    const auto stretched = m_stretcher.process(samples);
    if (!stretched)
        return std::unexpected(stretched.error());
    return write(*stretched);
}

bool AudioSynchronizer::hasJumped(double slip, double seconds) {
    m_slippedSeconds = std::fabs(slip) > noticeableSlip ? m_slippedSeconds + seconds : 0;
    return m_slippedSeconds > slipPatience || std::fabs(slip) > certainJump;
}

std::expected<void, PlatformError> AudioSynchronizer::fillUntil(double hostTime) {
    const double missing = framesSinceEpoch(hostTime) - position();
    if (missing <= 0)
        return {};
    if (const auto drained = drain(); !drained)
        return drained;
    m_isFlowing = false;
    return writeSilence(std::int64_t(std::llround(framesSinceEpoch(hostTime))) - m_written);
}

std::expected<std::int64_t, PlatformError> AudioSynchronizer::finish(double hostTime) {
    const std::int64_t end = std::max<std::int64_t>(0, std::llround(framesSinceEpoch(hostTime)));
    auto finished = drain();
    if (finished)
        finished = writeSilence(end - m_written);
    if (!finished)
        return std::unexpected(finished.error());
    return end;
}

double AudioSynchronizer::coveredUntil() const {
    return m_epoch + position() / audioSampleRate;
}

double AudioSynchronizer::framesSinceEpoch(double hostTime) const {
    return (hostTime - m_epoch) * audioSampleRate;
}

std::expected<void, PlatformError> AudioSynchronizer::drain() {
    const auto rest = m_stretcher.drain();
    if (!rest)
        return std::unexpected(rest.error());
    return write(*rest);
}

std::expected<void, PlatformError> AudioSynchronizer::write(std::span<const float> samples) {
    if (samples.empty())
        return {};
    m_written += std::int64_t(samples.size()) / SoundStretcher::channels;
    return m_sink(samples);
}

std::expected<void, PlatformError> AudioSynchronizer::writeSilence(std::int64_t frames) {
    static constexpr std::array<float, 4096> silence{};
    while (frames > 0) {
        const auto count =
            std::min<std::int64_t>(frames, std::int64_t(silence.size()) / SoundStretcher::channels);
        if (const auto written =
                write(std::span(silence).first(std::size_t(count * SoundStretcher::channels)));
            !written)
            return written;
        frames -= count;
    }
    return {};
}

} // namespace vantrell
