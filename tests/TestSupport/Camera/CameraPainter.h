// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/FFmpegPointers.h"
#include "Platform/CameraSource.h"

#include <cstdint>
#include <span>
#include <vector>

namespace vantrell::testing {

/// Makes a test camera's pictures in any of the formats that cameras send: a coloured ground with a moving
/// bar and the picture's number as a frame code in the top left corner. Thread-bound.
class CameraPainter {
public:
    /// At least as wide as a frame code.
    CameraPainter(CameraFormat format, PixelSize size);

    /// Colour of the ground everywhere.
    static constexpr std::uint8_t groundCb = 100;
    static constexpr std::uint8_t groundCr = 160;

    /// The next picture's bytes, valid until the next call: raw pixels without gaps between rows, or one
    /// compressed picture. White but for the code when `isFlash`.
    std::span<const std::uint8_t> paint(std::uint32_t number, bool isFlash = false);

private:
    void paintRaw(std::uint32_t number, bool isFlash);
    std::span<const std::uint8_t> compress();

    const CameraFormat m_format;
    const PixelSize m_size;
    /// NV12, I420 or YUYV.
    std::vector<std::uint8_t> m_pixels;
    CodecContextPtr m_encoder;
    FramePtr m_frame;
    PacketPtr m_packet;
    std::int64_t m_painted = 0;
};

} // namespace vantrell::testing
