// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/TrackFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vantrell {

enum class TrackKind { video, audio };

/// What a movie file says about a track besides its samples.
struct TrackDescription {
    TrackKind kind = TrackKind::video;
    std::uint32_t timeScale = 0;
    /// Pixels; empty for sound.
    PixelSize size;
    /// Ticks of a packet that stands alone; 0 where samples have no duration of their own.
    std::uint32_t samplesPerPacket = 0;
    /// Ticks at the start that are decoded and not presented.
    std::uint32_t priming = 0;
    std::string name;
    /// Entries of the sample description table, whole boxes.
    std::vector<std::vector<std::uint8_t>> sampleDescriptions;

    bool operator==(const TrackDescription &) const = default;
};

TrackDescription describeTrack(const VideoTrackFormat &format);
TrackDescription describeTrack(const AudioTrackFormat &format);

} // namespace vantrell
