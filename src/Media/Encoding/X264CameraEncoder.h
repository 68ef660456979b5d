// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/CameraQuantizer.h"
#include "Media/Encoding/PictureContent.h"
#include "Media/Encoding/VideoEncoder.h"
#include "Media/Encoding/X264Library.h"

#include <memory>

namespace vantrell {

/// H.264 through libx264, set up for a camera: everything changes a little in every picture, softly, and
/// noise is no detail.
class X264CameraEncoder final : public VideoEncoder {
public:
    /// For a camera's `content`.
    static std::expected<std::unique_ptr<X264CameraEncoder>, PlatformError>
    create(PixelSize picture, PictureContent content, ColourMatrix matrix);

    const std::vector<std::uint8_t> &codecConfiguration() const override { return m_configuration; }
    PixelSize encodedSize() const override { return m_encoded; }
    /// What did not change is of no interest: the picture held at the end aside, that is nothing.
    std::expected<EncodedFrame, PlatformError> encode(const Nv12Frame &frame, const BlockMap &changed,
                                                      std::int64_t presentationTime, bool keyFrame) override;

private:
    X264CameraEncoder(X264Ptr encoder, PixelSize encoded, std::vector<std::uint8_t> configuration);

    const X264Ptr m_encoder;
    const PixelSize m_encoded;
    const std::vector<std::uint8_t> m_configuration;
    CameraQuantizer m_quantizer;
};

} // namespace vantrell
