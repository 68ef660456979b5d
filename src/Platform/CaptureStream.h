// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/Geometry.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <variant>

namespace vantrell {

/// What a finished movie file is known to hold.
struct RecordingSummary {
    /// From the first frame to the moment of the stop.
    double durationSeconds = 0;
    std::int64_t frames = 0;
    /// Changes of the screen that got no frame of their own because the encoder or the disk could not keep
    /// up.
    std::int64_t droppedFrames = 0;
    /// Why the sound that was wanted is not there. A device that was away is no problem: it is silence.
    std::optional<PlatformError> soundProblem;
};

/// What a stream tells. Called on the stream's own threads, one call at a time, never after the stream is
/// destroyed. Set before the start; unset ones are skipped.
struct CaptureStreamEvents {
    /// Host time of the first frame, the moment that is time 0 in the movie. Once.
    std::function<void(double hostTime)> firstFrame;
    /// Where the pointer is on the source's picture, in parts of its width and height (0...1 inside), from a
    /// source that tells it.
    std::function<void(double hostTime, Point onPicture)> pointerMoved;
    /// Interleaved microphone samples, -1...1, for metering.
    std::function<void(std::span<const float> samples)> microphoneSamples;
    /// The stream ended on its own (the window was closed, the display server went away, the disk is full).
    /// What was recorded up to then is being finished: one of the two below follows. At most once.
    std::function<void(PlatformError error)> stoppedWithError;
    /// The movie file is complete and closed. Exactly one of these two comes for a started stream.
    std::function<void(RecordingSummary summary)> recordingFinished;
    std::function<void(PlatformError error)> recordingFailed;
};

/// Why a stream does not run: Cancelled when the wait for its start was, which is no failure.
using StreamStartFailure = std::variant<PlatformError, Cancelled>;

/// One recording stretch: frames and audio in, one movie file out. Main thread. Destroying it stops it and
/// blocks until its threads have ended.
class CaptureStream {
public:
    virtual ~CaptureStream() = default;

    /// Opens source, encoder and file; done when capturing has begun. After a failure no file is left and no
    /// event of an end comes; after a cancelled start no file is left once the stream is destroyed. Once.
    virtual Task<std::expected<void, StreamStartFailure>> start(std::stop_token stop) = 0;

    /// The picture's size, known once it has started.
    virtual PixelSize pictureSize() const = 0;

    /// Asks for the end: the picture is held up to this moment and the file is finished. Returns at once; the
    /// result comes as an event. A second call does nothing.
    virtual void stop() = 0;
};

} // namespace vantrell
