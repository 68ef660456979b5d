// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Camera/JpegUnpacker.h"
#include "Media/Libav/FFmpegPointers.h"
#include "Platform/CameraSource.h"

namespace vantrell {

/// Unpacks the compressed pictures of one camera. Damaged ones are left out. Thread-bound.
class CameraDecoder {
public:
    /// Of the given compressed format.
    explicit CameraDecoder(CameraFormat format);
    CameraDecoder(const CameraDecoder &) = delete;
    CameraDecoder &operator=(const CameraDecoder &) = delete;

    /// The picture, valid until the next call; null when it is damaged or not to be shown yet. `leastSide` is
    /// what its shorter side has to have: it may come smaller; 0 for its own size.
    const AVFrame *decode(std::span<const std::uint8_t> data, int leastSide = 0);

private:
    void open();
    bool decodeVideo(std::span<const std::uint8_t> data);

    const CameraFormat m_format;
    /// A picture with any fault is refused. Some cameras make no others: then they are taken as they come.
    bool m_isStrict = true;
    int m_refusedInARow = 0;
    /// Pictures of a video stream that refer to a damaged one are left out: so many more, unless a key frame
    /// comes before.
    int m_spoilt = 0;
    /// Pictures that the decoder has made room for since it was given the last one: more than one when it had
    /// to invent those that a busy machine has lost on the way, which it does not tell otherwise.
    int m_begun = 0;
    JpegUnpacker m_jpeg;
    CodecContextPtr m_context;
    PacketPtr m_packet;
    FramePtr m_frame;
};

} // namespace vantrell
