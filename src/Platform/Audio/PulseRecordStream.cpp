// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseRecordStream.h"

#include "Support/HostTime.h"

#include <algorithm>
#include <span>
#include <utility>

namespace vantrell {

namespace {

/// Frames the server hands over at a time: 43 ms, the longest processing cycle that PipeWire takes. Smaller
/// ones wake both processes more often; larger ones come in uneven lots and keep a stop waiting.
constexpr std::uint32_t fragmentFrames = 2048;
/// At first each read asks for the timing, so that the clock is right within half a second; then six a second
/// do.
constexpr int eagerReads = 8;
constexpr int readsPerTiming = 4;
/// Longer than a server may take to answer a stream's first question.
constexpr std::size_t heldFramesLimit = std::size_t(2) * audioSampleRate;

} // namespace

PulseRecordStream::PulseRecordStream(pa_context *context, const std::string &source, int channels,
                                     Handlers handlers)
    : m_channels(channels), m_handlers(std::move(handlers)) {
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, audioSampleRate, std::uint8_t(channels)};
    m_stream.reset(pa_stream_new(context, "Screen recording", &format, nullptr));
    if (!m_stream)
        return;
    pa_stream_set_state_callback(
        m_stream.get(),
        [](pa_stream *, void *self) { static_cast<PulseRecordStream *>(self)->stateChanged(); }, this);
    pa_stream_set_read_callback(
        m_stream.get(),
        [](pa_stream *, std::size_t, void *self) { static_cast<PulseRecordStream *>(self)->readAvailable(); },
        this);
    pa_stream_set_suspended_callback(
        m_stream.get(),
        [](pa_stream *stream, void *self) {
            // The device slept: its frames do not follow each other.
            auto *recording = static_cast<PulseRecordStream *>(self);
            if (pa_stream_is_suspended(stream) == 0) {
                recording->m_clock.reset();
                recording->m_startsAnew = true;
            }
        },
        this);
    const auto frameBytes = std::uint32_t(pa_frame_size(&format));
    const pa_buffer_attr buffering{.maxlength = std::uint32_t(-1),
                                   .tlength = std::uint32_t(-1),
                                   .prebuf = std::uint32_t(-1),
                                   .minreq = std::uint32_t(-1),
                                   .fragsize = fragmentFrames * frameBytes};
    // The server must not move it: which device is recorded is decided here, and seen in the time stamps.
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(m_stream.get(), source.c_str(), &buffering, flags) < 0)
        m_stream.reset();
}

void PulseRecordStream::stateChanged() {
    switch (pa_stream_get_state(m_stream.get())) {
    case PA_STREAM_READY:
        m_handlers.started();
        return;
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED:
        // A copy: the handler may destroy this object.
        std::function<void()>(m_handlers.ended)();
        return;
    default:
        return;
    }
}

void PulseRecordStream::readAvailable() {
    while (pa_stream_readable_size(m_stream.get()) > 0) {
        const void *data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(m_stream.get(), &data, &bytes) < 0 || bytes == 0)
            break;
        const std::span samples(static_cast<const float *>(data), bytes / sizeof(float));
        if (data) {
            m_held.insert(m_held.end(), samples.begin(), samples.end());
        } else {
            // A hole: the server lost so much.
            deliverHeld();
            m_position += std::int64_t(samples.size()) / m_channels;
            m_startsAnew = true;
        }
        pa_stream_drop(m_stream.get());
    }
    deliverHeld();
    if (m_reads++ < eagerReads || m_reads % readsPerTiming == 0 || !m_clock.isSet())
        requestTiming();
}

void PulseRecordStream::deliverHeld() {
    const auto limit = heldFramesLimit * std::size_t(m_channels);
    if (!m_clock.isSet()) {
        if (m_held.size() > limit)
            m_held.erase(m_held.begin(), m_held.end() - std::ptrdiff_t(limit));
        return;
    }
    if (m_held.empty())
        return;
    m_handlers.block({.samples = m_held,
                      .channels = m_channels,
                      .hostTime = m_clock.timeOf(m_position),
                      .startsAnew = std::exchange(m_startsAnew, false)});
    m_position += std::int64_t(m_held.size()) / m_channels;
    m_held.clear();
}

/// Asked for right after a read, that is right after one of the server's processing cycles: the answer then
/// is hardly ever late by a cycle. libpulse's own interpolation takes the lateness for a clock that runs
/// fast, and drifts away by 10 ms in a few seconds.
void PulseRecordStream::requestTiming() {
    if (m_timing && pa_operation_get_state(m_timing.get()) == PA_OPERATION_RUNNING)
        return;
    m_timing.reset(pa_stream_update_timing_info(
        m_stream.get(),
        [](pa_stream *, int succeeded, void *self) {
            if (succeeded != 0)
                static_cast<PulseRecordStream *>(self)->timingArrived();
        },
        this));
}

void PulseRecordStream::timingArrived() {
    const pa_timing_info *info = pa_stream_get_timing_info(m_stream.get());
    if (!info || info->read_index_corrupt != 0 || info->write_index_corrupt != 0)
        return;
    const std::int64_t frameBytes = m_channels * std::int64_t(sizeof(float));
    // What the server counts beyond what came here was lost in its queue.
    const std::int64_t next = info->read_index / frameBytes - std::int64_t(m_held.size()) / m_channels;
    if (next != m_position) {
        m_position = next;
        m_startsAnew = true;
    }
    // The server's newest frame sounded as long before the answer as the device's own buffers hold; from a
    // monitor it is yet to be heard.
    const double answered = hostNow() - double(info->transport_usec) * 1e-6;
    const double device = (double(info->source_usec) - double(info->sink_usec)) * 1e-6;
    if (m_clock.observe(info->write_index / frameBytes, answered - device))
        m_startsAnew = true;
    deliverHeld();
}

} // namespace vantrell
