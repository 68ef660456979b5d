// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/QuantizerControl.h"
#include "Media/Encoding/VideoEncoder.h"

#include <memory>

namespace vantrell {

/// H.264 through libx264, set up for screens: macroblocks that did not change are passed over. Encodes in
/// slices on several threads where one does not keep up, for as long as it would not.
class X264Encoder final : public VideoEncoder {
public:
    /// One thread of an ordinary machine encodes 1080p at 60 frames a second with ease; larger pictures take
    /// several from the start.
    static bool isLarge(PixelSize picture) { return picture.width * picture.height > 2'500'000; }

    static std::expected<std::unique_ptr<X264Encoder>, PlatformError> create(PixelSize picture);
    ~X264Encoder() override;
    X264Encoder(const X264Encoder &) = delete;
    X264Encoder &operator=(const X264Encoder &) = delete;

    const std::vector<std::uint8_t> &codecConfiguration() const override;
    PixelSize encodedSize() const override;
    std::expected<EncodedFrame, PlatformError> encode(const Nv12Frame &frame, const BlockMap &changed,
                                                      std::int64_t presentationTime, bool keyFrame) override;

private:
    struct State;
    explicit X264Encoder(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};

} // namespace vantrell
