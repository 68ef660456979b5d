// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/Nv12Frame.h"
#include "Support/BlockMap.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <optional>
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

    /// The presentation time from which on what stands still is worth being encoded once more, finer
    /// (`refine`); nothing while it is not.
    virtual std::optional<std::int64_t> refinesAt() const { return std::nullopt; }

    /// Encodes the frame that was encoded last once more. Nothing when it turns out not to be worth it.
    virtual std::expected<std::optional<EncodedFrame>, PlatformError>
    refine(const Nv12Frame & /*frame*/, std::int64_t /*presentationTime*/) {
        return std::nullopt;
    }
};

} // namespace vantrell
