// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/SoundStretcher.h"

#include "Media/Libav/FFmpegError.h"
#include "Platform/AudioSource.h"

#include <cmath>

extern "C" {
#include <libavutil/opt.h>
}

namespace vantrell {

namespace {

/// The stretch is asked for as so many frames over this many: the longer the distance, the finer the steps
/// (0.02 ppm). It never runs out, since every block asks anew.
constexpr int stretchDistance = 48'000'000;

} // namespace

std::expected<SoundStretcher, PlatformError> SoundStretcher::create() {
    AVChannelLayout stereo{};
    av_channel_layout_default(&stereo, channels);
    SwrContext *context = nullptr;
    swr_alloc_set_opts2(&context, &stereo, AV_SAMPLE_FMT_FLT, audioSampleRate, &stereo, AV_SAMPLE_FMT_FLT,
                        audioSampleRate, 0, nullptr);
    ResamplerPtr resampler(context);
    if (!resampler)
        return std::unexpected(ffmpegError("create the resampler", AVERROR(ENOMEM)));
    // Equal rates would be copied; and between two taps of the filter it shall interpolate, or small
    // stretches are heard as noise.
    av_opt_set_int(resampler.get(), "flags", SWR_FLAG_RESAMPLE, 0);
    av_opt_set_int(resampler.get(), "linear_interp", 1, 0);
    av_opt_set_int(resampler.get(), "exact_rational", 0, 0);
    if (const int opened = swr_init(resampler.get()); opened < 0)
        return std::unexpected(ffmpegError("open the resampler", opened));
    return SoundStretcher(std::move(resampler));
}

void SoundStretcher::setStretch(double stretch) {
    swr_set_compensation(m_resampler.get(), int(std::lround(stretch * stretchDistance)), stretchDistance);
}

std::expected<std::span<const float>, PlatformError> SoundStretcher::process(std::span<const float> samples) {
    return convert(samples.data(), int(samples.size()) / channels);
}

std::expected<std::span<const float>, PlatformError> SoundStretcher::drain() {
    const auto rest = convert(nullptr, 0);
    if (const int opened = swr_init(m_resampler.get()); opened < 0)
        return std::unexpected(ffmpegError("restart the resampler", opened));
    return rest;
}

std::expected<std::span<const float>, PlatformError> SoundStretcher::convert(const float *samples,
                                                                             int frames) {
    const int room = swr_get_out_samples(m_resampler.get(), frames);
    if (room < 0)
        return std::unexpected(ffmpegError("resample sound", room));
    m_output.resize(std::size_t(room) * channels);
    auto *out = reinterpret_cast<std::uint8_t *>(m_output.data());
    const auto *in = reinterpret_cast<const std::uint8_t *>(samples);
    const int made = swr_convert(m_resampler.get(), &out, room, samples ? &in : nullptr, frames);
    if (made < 0)
        return std::unexpected(ffmpegError("resample sound", made));
    return std::span<const float>(m_output).first(std::size_t(made) * channels);
}

double SoundStretcher::pendingFrames() const {
    // In fractions of a frame: what comes next lands between two frames of the output.
    constexpr std::int64_t fraction = 1000;
    return double(swr_get_delay(m_resampler.get(), audioSampleRate * fraction)) / fraction;
}

} // namespace vantrell
