// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/EncodedSample.h"
#include "Media/Movie/TrackFormat.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>

namespace vantrell {

/// A track of one movie, in the order of adding.
struct TrackId {
    int index = 0;
    bool operator==(const TrackId &) const = default;
};

/// Where a track's presentation ends, in its time scale from the movie's zero.
struct TrackEnd {
    TrackId track;
    std::int64_t end = 0;
};

/// What encoders hand their samples to. Every method is thread-safe.
class MovieSink {
public:
    virtual ~MovieSink() = default;

    /// The movie's tracks keep the order of these calls: picture, microphone, system audio. A track may be
    /// added while others are being written.
    virtual TrackId addVideoTrack(const VideoTrackFormat &format) = 0;
    virtual TrackId addAudioTrack(const AudioTrackFormat &format) = 0;

    /// Takes a copy of a sample. An error stays: nothing more is taken. May block while the disk is far
    /// behind.
    virtual std::expected<void, PlatformError> append(TrackId track, const EncodedSample &sample) = 0;
};

} // namespace vantrell
