// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/VideoEncoder.h"
#include "Media/Libav/ColourMatrix.h"
#include "Media/Libav/FFmpegPointers.h"

#include <expected>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantrell {

/// H.264 through one of libavcodec's encoders, which is how graphics cards are reached.
class LibavEncoder final : public VideoEncoder {
public:
    struct Codec {
        /// As libavcodec calls it, "h264_vaapi" for example.
        std::string name;
        /// The card's memory that pictures are brought to first; none for encoders that take them as they
        /// are.
        AVHWDeviceType memory = AV_HWDEVICE_TYPE_NONE;
        /// The card, "/dev/dri/renderD128" for example.
        std::string device;
        std::vector<std::pair<std::string, std::string>> options;
    };

    /// Fails when the encoder, the card or its driver is not there, or does not take the picture's size.
    static std::expected<std::unique_ptr<LibavEncoder>, PlatformError>
    create(const Codec &codec, PixelSize picture, ColourMatrix matrix = ColourMatrix::bt709);

    /// Empty before the first frame where the encoder tells it only with that.
    const std::vector<std::uint8_t> &codecConfiguration() const override { return m_configuration; }
    PixelSize encodedSize() const override;

    /// Fails also when the encoder keeps the frame back until more come: the next may come minutes later.
    std::expected<EncodedFrame, PlatformError> encode(const Nv12Frame &frame, const BlockMap &changed,
                                                      std::int64_t presentationTime, bool keyFrame) override;

private:
    LibavEncoder(CodecContextPtr context, FramePtr picture, FramePtr inMemory, PacketPtr packet);

    std::expected<void, PlatformError> send(const Nv12Frame &frame, bool keyFrame);
    /// Takes the parameter sets out of a byte stream, where it has them and they are not known yet.
    void learnConfiguration(std::span<const std::uint8_t> stream);

    CodecContextPtr m_context;
    /// Refers to the frame that is being encoded.
    FramePtr m_picture;
    /// Its copy in the card's memory; null for encoders that need none.
    FramePtr m_inMemory;
    PacketPtr m_packet;
    std::int64_t m_framesSent = 0;
    std::vector<std::uint8_t> m_configuration;
    std::vector<std::uint8_t> m_data;
};

} // namespace vantrell
