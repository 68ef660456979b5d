// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Sound/DriftController.h"
#include "Media/Sound/SoundStretcher.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <span>

namespace vantrell {

/// Puts the sound of a device on the movie's time line. Thread-bound.
///
/// Four facts hold for what comes out:
///  1. One zero: the first frame belongs to the epoch, the host time of the movie's first picture. Sound from
///     before is cut, a later beginning is preceded by silence.
///  2. One clock: the device's own is measured against the host's and the sound is stretched to follow the
///     host (DriftController).
///  3. No holes: what a device did not deliver is silence of the same length.
///  4. One end: `finish` names the moment of the stop; the sound reaches it to the frame.
class AudioSynchronizer {
public:
    /// Takes the next stereo frames of the track; its error ends the call that made them.
    using Sink = std::function<std::expected<void, PlatformError>(std::span<const float> samples)>;

    static std::expected<AudioSynchronizer, PlatformError> create(Sink sink);

    /// The host time of the first frame; set before any sound.
    void setEpoch(double hostTime) { m_epoch = hostTime; }

    /// Takes interleaved stereo frames, the first of which sounded at `hostTime`. `startsAnew`: they do not
    /// continue the ones before.
    std::expected<void, PlatformError> push(std::span<const float> samples, double hostTime, bool startsAnew);

    /// The device is silent: fills the track with silence up to `hostTime`. Sound for a time that is filled
    /// already is dropped.
    std::expected<void, PlatformError> fillUntil(double hostTime);

    /// Fills what is missing up to `hostTime`. Returns the frames that the track lasts; more than these may
    /// have come out. Nothing can follow.
    std::expected<std::int64_t, PlatformError> finish(double hostTime);

    /// Host time up to which sound is known.
    double coveredUntil() const;

private:
    AudioSynchronizer(Sink sink, SoundStretcher stretcher)
        : m_sink(std::move(sink)), m_stretcher(std::move(stretcher)) {}

    /// Where the next frame of the device would come out, in frames from the epoch.
    double position() const { return double(m_written) + m_stretcher.pendingFrames(); }
    double framesSinceEpoch(double hostTime) const;
    /// The slip is too large, or was for too long, to be mended by stretching.
    bool hasJumped(double slip, double seconds);
    std::expected<void, PlatformError> drain();
    std::expected<void, PlatformError> write(std::span<const float> samples);
    std::expected<void, PlatformError> writeSilence(std::int64_t frames);

    double m_epoch = 0;
    Sink m_sink;
    SoundStretcher m_stretcher;
    DriftController m_drift;
    std::int64_t m_written = 0;
    /// The device's frames follow each other; otherwise the next ones are put where their time says.
    bool m_isFlowing = false;
    double m_slippedSeconds = 0;
};

} // namespace vantrell
