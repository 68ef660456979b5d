// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Sound/SoundPlayer.h"

#include "Support/HostTime.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantrell::testing {

namespace {

constexpr std::uint32_t playedRate = 48000;
/// Deep, so that a busy machine does not make it stutter.
constexpr std::uint32_t bufferedFrames = playedRate / 2;
/// Shorter than the server's cycles.
constexpr pa_usec_t observationInterval = 5000;
constexpr double observationWindow = 0.7;
constexpr double steadiness = 0.004;

} // namespace

SoundPlayer::SoundPlayer(const std::string &sink, std::vector<float> signal)
    : SoundPlayer(sink, [signal = std::move(signal)](std::int64_t firstFrame, std::span<float> samples) {
          for (float &sample : samples)
              sample = signal[std::size_t(firstFrame++) % signal.size()];
      }) {}

SoundPlayer::SoundPlayer(const std::string &sink, Source source)
    : m_source(std::move(source)), m_loop(pa_threaded_mainloop_new()),
      m_context(pa_context_new(pa_threaded_mainloop_get_api(m_loop), "player")), m_sink(sink) {
    pa_context_set_state_callback(
        m_context,
        [](pa_context *context, void *me) {
            auto *self = static_cast<SoundPlayer *>(me);
            if (pa_context_get_state(context) != PA_CONTEXT_READY)
                return;
            const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, playedRate, 1};
            self->m_stream = pa_stream_new(context, "signal", &format, nullptr);
            pa_stream_set_write_callback(
                self->m_stream,
                [](pa_stream *, std::size_t bytes, void *writer) {
                    static_cast<SoundPlayer *>(writer)->write(bytes);
                },
                self);
            pa_buffer_attr buffering{};
            std::fill_n(reinterpret_cast<std::uint32_t *>(&buffering), sizeof buffering / 4,
                        std::uint32_t(-1));
            buffering.tlength = bufferedFrames * sizeof(float);
            pa_stream_connect_playback(self->m_stream, self->m_sink.c_str(), &buffering,
                                       pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE),
                                       nullptr, nullptr);
            self->m_timer = pa_context_rttime_new(
                context, pa_rtclock_now() + observationInterval,
                [](pa_mainloop_api *, pa_time_event *event, const timeval *, void *player) {
                    static_cast<SoundPlayer *>(player)->observe();
                    pa_context_rttime_restart(static_cast<SoundPlayer *>(player)->m_context, event,
                                              pa_rtclock_now() + observationInterval);
                },
                self);
        },
        this);
    pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    pa_threaded_mainloop_start(m_loop);
}

SoundPlayer::~SoundPlayer() {
    pa_threaded_mainloop_stop(m_loop);
    if (m_timer)
        pa_threaded_mainloop_get_api(m_loop)->time_free(m_timer);
    if (m_stream) {
        pa_stream_disconnect(m_stream);
        pa_stream_unref(m_stream);
    }
    pa_context_disconnect(m_context);
    pa_context_unref(m_context);
    pa_threaded_mainloop_free(m_loop);
}

std::optional<double> SoundPlayer::startTime(double at) const {
    std::optional<double> before;
    std::optional<double> after;
    const std::scoped_lock lock(m_mutex);
    for (const Observation &observation : m_observations) {
        if (std::fabs(observation.at - at) > observationWindow)
            continue;
        std::optional<double> &start = observation.at < at ? before : after;
        start = std::min(start.value_or(observation.start), observation.start);
    }
    if (!before || !after || std::fabs(*before - *after) > steadiness)
        return std::nullopt;
    return std::min(*before, *after);
}

void SoundPlayer::write(std::size_t bytes) {
    std::vector<float> samples(bytes / sizeof(float));
    m_source(m_written, samples);
    m_written += std::int64_t(samples.size());
    pa_stream_write(m_stream, samples.data(), samples.size() * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE);
}

/// The server takes a cycle's worth of samples at a time; they are heard in the cycle after. Right after it
/// took some the answer is exact, otherwise it is late: the earliest of several counts.
void SoundPlayer::observe() {
    if (pa_stream_get_state(m_stream) != PA_STREAM_READY)
        return;
    pa_operation *asked = pa_stream_update_timing_info(
        m_stream,
        [](pa_stream *stream, int succeeded, void *me) {
            auto *self = static_cast<SoundPlayer *>(me);
            const pa_timing_info *info = pa_stream_get_timing_info(stream);
            if (succeeded == 0 || !info || info->playing == 0)
                return;
            const double answered = hostNow() - double(info->transport_usec) * 1e-6;
            const auto taken = info->read_index / std::int64_t(sizeof(float));
            const std::int64_t cycle = taken - std::exchange(self->m_taken, taken);
            if (cycle <= 0)
                return;
            const double played = double(taken - cycle) / playedRate;
            const std::scoped_lock lock(self->m_mutex);
            self->m_observations.push_back({answered, answered + double(info->sink_usec) * 1e-6 - played});
        },
        this);
    if (asked)
        pa_operation_unref(asked);
}

} // namespace vantrell::testing
