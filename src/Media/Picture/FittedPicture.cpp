// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Picture/FittedPicture.h"

namespace vantrell {

namespace {

constexpr int fittedBytesPerPixel = 4;

} // namespace

FittedPicture::FittedPicture(PixelSize size) : m_size(size) {}

FramePatch FittedPicture::black() {
    m_source = {};
    const std::ptrdiff_t stride = std::ptrdiff_t(m_size.width) * fittedBytesPerPixel;
    m_pixels.assign(std::size_t(stride) * std::size_t(m_size.height), 0);
    return {{0, 0, m_size.width, m_size.height}, m_pixels.data(), stride};
}

FramePatch FittedPicture::fit(const std::uint8_t *pixels, std::ptrdiff_t stride, PixelSize source) {
    const std::ptrdiff_t ownStride = std::ptrdiff_t(m_size.width) * fittedBytesPerPixel;
    const PixelRect place = fitted(source, m_size);
    if (source != m_source || !m_scaler) {
        m_source = source;
        m_pixels.assign(std::size_t(ownStride) * std::size_t(m_size.height), 0);
        m_scaler.reset(sws_getContext(source.width, source.height, AV_PIX_FMT_BGR0, place.width, place.height,
                                      AV_PIX_FMT_BGR0, SWS_BILINEAR, nullptr, nullptr, nullptr));
    }
    if (m_scaler) {
        const std::uint8_t *from[] = {pixels, nullptr, nullptr, nullptr};
        const int fromStrides[] = {int(stride), 0, 0, 0};
        std::uint8_t *to[] = {m_pixels.data() + place.y * ownStride +
                                  std::ptrdiff_t(place.x) * fittedBytesPerPixel,
                              nullptr, nullptr, nullptr};
        const int toStrides[] = {int(ownStride), 0, 0, 0};
        sws_scale(m_scaler.get(), from, fromStrides, 0, source.height, to, toStrides);
    }
    return {{0, 0, m_size.width, m_size.height}, m_pixels.data(), ownStride};
}

} // namespace vantrell
