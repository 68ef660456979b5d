// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantrell::testing {

/// Plays a mono signal into an output of the sound server, over and over or as it is made, and knows when
/// each sample is heard.
class SoundPlayer {
public:
    SoundPlayer(const std::string &sink, std::vector<float> signal);
    /// Makes the samples from a frame on, of 48000 a second; called in the player's thread, about half a
    /// second before they are heard.
    using Source = std::function<void(std::int64_t firstFrame, std::span<float> samples)>;
    SoundPlayer(const std::string &sink, Source source);
    /// Silence at once.
    ~SoundPlayer();
    SoundPlayer(const SoundPlayer &) = delete;
    SoundPlayer &operator=(const SoundPlayer &) = delete;

    /// Host time at which the signal's first sample was heard, or would have been at the pace at which it was
    /// played around host time `at`; to a millisecond or two. None when nothing was played then or the server
    /// stumbled, as it does on a busy machine: then nobody can tell.
    std::optional<double> startTime(double at) const;

private:
    void write(std::size_t bytes);
    void observe();

    const Source m_source;
    pa_threaded_mainloop *m_loop;
    pa_context *m_context;
    pa_stream *m_stream = nullptr;
    const std::string m_sink;
    std::int64_t m_written = 0;
    /// Frames that the server had taken when it answered last.
    std::int64_t m_taken = 0;

    struct Observation {
        double at;
        double start;
    };
    mutable std::mutex m_mutex;
    std::vector<Observation> m_observations;
    pa_time_event *m_timer = nullptr;
};

} // namespace vantrell::testing
