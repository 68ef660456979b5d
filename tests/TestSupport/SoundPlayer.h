// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// Plays a mono signal into an output of the sound server, over and over, and knows when each sample is
/// heard.
class SoundPlayer {
public:
    SoundPlayer(const std::string &sink, std::vector<float> signal);
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

    const std::vector<float> m_signal;
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
