// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/FFmpegPointers.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

namespace vantrell {

/// Decodes what an encoder has just made, picture by picture. Thread-bound.
class TrialDecoder {
public:
    std::expected<void, PlatformError> open(const std::vector<std::uint8_t> &configuration);

    /// The picture of one frame behind lengths, which is valid until the next call.
    std::expected<const AVFrame *, PlatformError> decode(std::span<const std::uint8_t> frame);

private:
    CodecContextPtr m_context;
    PacketPtr m_packet{av_packet_alloc()};
    FramePtr m_frame{av_frame_alloc()};
};

} // namespace vantrell
