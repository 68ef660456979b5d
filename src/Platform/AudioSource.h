// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>

namespace vantrell {

/// The rate of all sound in the system, in frames a second; the sound server converts.
inline constexpr int audioSampleRate = 48000;

/// What to record.
struct AudioSourceRequest {
    enum class Kind { microphone = 1, systemAudio };
    Kind kind = Kind::microphone;
    /// Microphone only: record this one and no other. Absent: the default, also when another becomes it.
    /// System audio is what the default output plays.
    std::optional<std::string> deviceId;
};

/// Some consecutive frames of sound.
struct AudioBlock {
    /// Interleaved, -1...1, at `audioSampleRate`. Borrowed for the length of the call.
    std::span<const float> samples;
    /// 1 or 2; may change when `startsAnew`.
    int channels = 2;
    /// Host seconds at which the first frame sounded. Jitters by a few milliseconds; it follows the device's
    /// own clock, which is not quite the host's.
    double hostTime = 0;
    /// The frames do not continue the block before: the first ones of a device, or some were lost.
    bool startsAnew = false;
};

enum class AudioSourceState {
    /// Sound comes.
    running = 1,
    /// The server is there, the device is not.
    deviceMissing,
    serverMissing,
};

/// Called on the source's own thread, one call at a time. Unset ones are skipped.
struct AudioSourceHandlers {
    std::function<void(const AudioBlock &block)> block;
    /// The first state comes within five seconds of the start, then every change. A source never gives up:
    /// when the device, a new default or the server comes back, it runs again.
    std::function<void(AudioSourceState state)> stateChanged;
};

/// Port: one stream of sound. Thread-bound but for the handlers.
class AudioSource {
public:
    /// Ends the stream; no handler runs afterwards. Blocks for the length of a handler at most.
    virtual ~AudioSource() = default;

    /// Returns at once. Call it once.
    virtual void start(AudioSourceHandlers handlers) = 0;
};

} // namespace vantrell
