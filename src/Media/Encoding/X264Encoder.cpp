// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/X264Encoder.h"

#include "Media/H264/H264Units.h"

#include <algorithm>
#include <utility>

namespace vantrell {

X264Encoder::X264Encoder(PixelSize picture, std::unique_ptr<SlicedX264> encoder)
    : m_encoder(std::move(encoder)),
      m_configuration(avcConfiguration(m_encoder->instance().sequenceParameters(),
                                       m_encoder->instance().pictureParameters())),
      m_quantizer(BlockMap(picture).columns() * BlockMap(picture).rows()) {}

std::expected<std::unique_ptr<X264Encoder>, PlatformError> X264Encoder::create(PixelSize picture) {
    auto encoder = SlicedX264::create(picture, SlicedX264::isLarge(picture));
    if (!encoder)
        return std::unexpected(encoder.error());
    return std::unique_ptr<X264Encoder>(new X264Encoder(picture, std::move(*encoder)));
}

std::expected<EncodedFrame, PlatformError> X264Encoder::encode(const Nv12Frame &frame,
                                                               const BlockMap &changed,
                                                               std::int64_t presentationTime, bool keyFrame) {
    m_hints.resize(changed.marks().size());
    std::ranges::transform(changed.marks(), m_hints.begin(), [](std::uint8_t mark) {
        return mark ? std::uint8_t(0) : X264Instance::constantHint;
    });
    const auto picture = m_encoder->encode(frame, m_hints, m_quantizer.quantizer(keyFrame), keyFrame,
                                           SlicedX264::Change::withKeyFrame);
    if (!picture)
        return std::unexpected(picture.error());
    m_quantizer.frameEncoded(double(presentationTime) / timeScale, changed.count(), picture->data.size(),
                             picture->isKey);
    return EncodedFrame{picture->data, presentationTime, picture->isKey};
}

} // namespace vantrell
