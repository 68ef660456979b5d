// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/Nv12Frame.h"
#include "Support/BlockMap.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

namespace vantrell {

/// One compressed frame, length-prefixed as MP4 and QuickTime hold it.
struct EncodedFrame {
    std::span<const std::uint8_t> data;
    std::int64_t presentationTime = 0;
    bool isKeyFrame = false;
};

/// Makes H.264 of pictures: a frame goes in and comes out in the same call. One thread at a time.
class VideoEncoder {
public:
    /// Ticks a second of all presentation times.
    static constexpr int timeScale = 90000;

    virtual ~VideoEncoder() = default;

    /// The avcC record of the movie's sample description.
    virtual const std::vector<std::uint8_t> &codecConfiguration() const = 0;

    /// The encoded size: the picture's, rounded up to even numbers.
    virtual PixelSize encodedSize() const = 0;

    /// `changed` tells which blocks differ from the frame encoded before; presentation times rise. The
    /// result's data is valid until the next call.
    virtual std::expected<EncodedFrame, PlatformError>
    encode(const Nv12Frame &frame, const BlockMap &changed, std::int64_t presentationTime, bool keyFrame) = 0;
};

} // namespace vantrell
