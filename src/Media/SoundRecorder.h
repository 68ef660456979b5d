// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/AudioTrackRecorder.h"
#include "Media/MovieWriter.h"
#include "Platform/AudioBackend.h"
#include "Support/Clock.h"

#include <expected>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The sound of one movie: the microphone's track, then the system audio's, each when asked for. A capture
/// stream owns one beside its picture.
///
///     sound.open()                     while the picture is being set up, so that sound is there in time
///     add the picture's track
///     sound.begin(writer, epoch)       at the first frame; epoch is its host time
///     sound.stop(hostTime)             the same moment that the picture is held to
///     writer.finish(...)               with the ends that stop returned
///
/// `open` on the main thread, the others on any one thread at a time.
class SoundRecorder {
public:
    struct Configuration {
        bool capturesMicrophone = false;
        /// Absent: the default one, also when that changes.
        std::optional<std::string> microphoneId;
        bool capturesSystemAudio = false;
    };

    /// `microphoneTap` gets the microphone's samples, interleaved, on a thread of the source's, from `open`
    /// on and never after `stop` has returned. `backend` and `clock` outlive the recorder.
    SoundRecorder(AudioBackend &backend, Configuration configuration, const Clock &clock,
                  AudioTrackRecorder::SampleTap microphoneTap);

    /// Starts to listen; done when every source has said whether there is sound. A device that is not there
    /// is no failure: its track is silent until it comes. Without a sound server:
    /// AudioErrorCode::noSoundServer; the recording goes on, `begin` then adds no track and `stop` returns
    /// nothing. Cancelled counts as done.
    Task<std::expected<void, PlatformError>> open(std::stop_token stop);

    /// Adds the tracks and records into them. After an error there is no sound. `writer` outlives `stop`.
    std::expected<void, PlatformError> begin(MovieWriter &writer, double epoch);

    /// Ends the tracks at this host time; done when the writer has all of it, within a quarter of a second.
    std::vector<TrackEnd> stop(double hostTime);

private:
    /// In the order of the tracks.
    std::vector<std::unique_ptr<AudioTrackRecorder>> m_tracks;
};

} // namespace vantrell
