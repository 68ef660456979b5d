// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/FFmpegPointers.h"
#include "Media/Movie/EncodedSample.h"
#include "Media/Movie/TrackFormat.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <span>
#include <string>

namespace vantrell {

/// Encodes stereo sound at `audioSampleRate` as AAC (low complexity). Thread-bound.
class AacEncoder {
public:
    static constexpr int channels = 2;

    /// Takes a packet; its error ends the call that brought the sound.
    using PacketSink = std::function<std::expected<void, PlatformError>(const EncodedSample &packet)>;

    /// `trackName` is what a player's menu shows.
    static std::expected<AacEncoder, PlatformError> create(int bitRate, std::string trackName);

    /// What the movie's track says; complete as soon as the encoder exists.
    const AudioTrackFormat &format() const { return m_format; }

    /// Interleaved frames, as many as there are; the first call's first frame has time 0. Calls `sink` for
    /// each packet that became complete. After an error the encoder is of no more use.
    std::expected<void, PlatformError> encode(std::span<const float> samples, const PacketSink &sink);

    /// Packets for what is still inside, the last one filled up with silence. Nothing can follow.
    std::expected<void, PlatformError> finish(const PacketSink &sink);

    /// Frames taken so far.
    std::int64_t framesTaken() const { return m_framesTaken; }

private:
    AacEncoder(CodecContextPtr codec, FramePtr frame, PacketPtr packet, std::string trackName);

    std::expected<void, PlatformError> sendFrame(const PacketSink &sink);
    std::expected<void, PlatformError> receivePackets(const PacketSink &sink);

    CodecContextPtr m_codec;
    /// Filled from the front; sent when full.
    FramePtr m_frame;
    PacketPtr m_packet;
    AudioTrackFormat m_format;
    int m_filled = 0;
    std::int64_t m_framesTaken = 0;
};

} // namespace vantrell
