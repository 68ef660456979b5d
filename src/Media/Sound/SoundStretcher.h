// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/FFmpegPointers.h"
#include "Support/PlatformError.h"

#include <expected>
#include <span>
#include <vector>

namespace vantrell {

/// Makes stereo sound at `audioSampleRate` longer or shorter by parts of a thousand. Thread-bound.
class SoundStretcher {
public:
    static constexpr int channels = 2;

    static std::expected<SoundStretcher, PlatformError> create();

    /// From the next frames on, `stretch` more frames come out for each one that goes in (0.001: a thousandth
    /// more).
    void setStretch(double stretch);

    /// Takes interleaved frames and returns those that became ready, valid until the next call.
    std::expected<std::span<const float>, PlatformError> process(std::span<const float> samples);

    /// Returns what is still inside and starts over: what comes next is unrelated.
    std::expected<std::span<const float>, PlatformError> drain();

    /// Frames that went in and did not come out yet.
    double pendingFrames() const;

private:
    explicit SoundStretcher(ResamplerPtr resampler) : m_resampler(std::move(resampler)) {}

    std::expected<std::span<const float>, PlatformError> convert(const float *samples, int frames);

    ResamplerPtr m_resampler;
    std::vector<float> m_output;
};

} // namespace vantrell
