// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieSink.h"
#include "Platform/CaptureStreamConfiguration.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vantrell {

/// Port: the sound of one recording stretch, written into the movie beside the picture. The capture stream
/// makes the calls in this order, all on one thread but perhaps the construction; what comes between runs on
/// threads of its own.
class SoundStage {
public:
    /// Ends the listening when `end` did not.
    virtual ~SoundStage() = default;

    /// Adds its tracks, the microphone's first, then the system's. A device that is not there is silence
    /// until it comes; without a sound server there are no tracks: sound never keeps a picture from being
    /// recorded. May take half a second. The movie lives until `end` has returned.
    virtual void begin(MovieSink &movie) = 0;

    /// The host time that is the movie's zero. What was heard before is left out.
    virtual void setEpoch(double hostTime) = 0;

    /// Ends the sound at that host time. When it returns, the movie has every sample and no thread uses
    /// it any more. Within a tenth of a second, since the last sound is still on its way from the device.
    virtual std::vector<TrackEnd> end(double hostTime) = 0;

    /// Why there is no sound, when there is none. After `begin`.
    virtual std::optional<PlatformError> problem() const = 0;
};

/// Makes the sound of one stretch, or nothing when the configuration wants none. `microphone` gets
/// interleaved microphone samples (-1...1) as they come, on a thread of the stage's.
using SoundStageFactory = std::function<std::unique_ptr<SoundStage>(
    const CaptureStreamConfiguration &configuration, std::function<void(std::span<const float>)> microphone)>;

} // namespace vantrell
