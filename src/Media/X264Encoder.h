// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/BlockMap.h"
#include "Media/Nv12Frame.h"
#include "Media/QuantizerControl.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <vector>

namespace vantrell {

/// One compressed frame, length-prefixed as MP4 and QuickTime hold it.
struct EncodedFrame {
    std::span<const std::uint8_t> data;
    std::int64_t presentationTime = 0;
    bool isKeyFrame = false;
};

/// H.264 through libx264, set up for screens: a frame goes in and comes out in the same call, and macroblocks
/// that did not change are passed over. One thread at a time.
class X264Encoder {
public:
    /// Ticks a second of all presentation times.
    static constexpr int timeScale = 90000;

    static std::expected<std::unique_ptr<X264Encoder>, PlatformError> create(PixelSize picture);
    ~X264Encoder();
    X264Encoder(const X264Encoder &) = delete;
    X264Encoder &operator=(const X264Encoder &) = delete;

    /// The avcC record of the movie's sample description.
    const std::vector<std::uint8_t> &codecConfiguration() const;

    /// The encoded size: the picture's, rounded up to even numbers.
    PixelSize encodedSize() const;

    /// `changed` tells which blocks differ from the frame encoded before; presentation times rise. The
    /// result's data is valid until the next call.
    std::expected<EncodedFrame, PlatformError> encode(const Nv12Frame &frame, const BlockMap &changed,
                                                      std::int64_t presentationTime, bool keyFrame);

private:
    struct State;
    explicit X264Encoder(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};

} // namespace vantrell
