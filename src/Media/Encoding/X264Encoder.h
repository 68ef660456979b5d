// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/QuantizerControl.h"
#include "Media/Encoding/SlicedX264.h"
#include "Media/Encoding/VideoEncoder.h"

#include <memory>

namespace vantrell {

/// H.264 through libx264, set up for screens: macroblocks that did not change are passed over. Encodes in
/// slices on several threads where one does not keep up, for as long as it would not.
class X264Encoder final : public VideoEncoder {
public:
    static std::expected<std::unique_ptr<X264Encoder>, PlatformError> create(PixelSize picture);

    const std::vector<std::uint8_t> &codecConfiguration() const override { return m_configuration; }
    PixelSize encodedSize() const override { return m_encoder->size(); }
    std::expected<EncodedFrame, PlatformError> encode(const Nv12Frame &frame, const BlockMap &changed,
                                                      std::int64_t presentationTime, bool keyFrame) override;

private:
    X264Encoder(PixelSize picture, std::unique_ptr<SlicedX264> encoder);

    std::unique_ptr<SlicedX264> m_encoder;
    std::vector<std::uint8_t> m_configuration;
    QuantizerControl m_quantizer;
    std::vector<std::uint8_t> m_hints;
};

} // namespace vantrell
