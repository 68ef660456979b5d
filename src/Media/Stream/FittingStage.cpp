// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/FittingStage.h"

#include "Platform/ScreenError.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace vantrell {

namespace {

constexpr int sourceBytesPerPixel = 4;

} // namespace

std::expected<std::span<const FramePatch>, PlatformError> FittingStage::fit(const FrameUpdate &update) {
    const auto *patches = std::get_if<std::span<const FramePatch>>(&update.content);
    if (!patches || update.format != PixelFormat::bgrx)
        return std::unexpected(screenError(ScreenErrorCode::unsupportedPixels,
                                           "The display's pixel format is not supported (24 bit colour is)"));
    if (update.size.isEmpty()) {
        if (std::exchange(m_hasPicture, true))
            return std::span<const FramePatch>();
        m_patch = m_fitted.black();
        return std::span(&m_patch, 1);
    }
    if (patches->empty())
        return *patches;
    m_hasPicture = true;
    if (update.size == m_picture) {
        m_wholeSize = {};
        return *patches;
    }
    remember(update.size, *patches);
    m_patch =
        m_fitted.fit(m_whole.data(), std::ptrdiff_t(update.size.width) * sourceBytesPerPixel, update.size);
    return std::span(&m_patch, 1);
}

void FittingStage::remember(PixelSize size, std::span<const FramePatch> patches) {
    const std::ptrdiff_t stride = std::ptrdiff_t(size.width) * sourceBytesPerPixel;
    if (m_wholeSize != size) {
        m_whole.resize(std::size_t(stride) * std::size_t(size.height));
        m_wholeSize = size;
    }
    for (const FramePatch &patch : patches) {
        std::uint8_t *to =
            m_whole.data() + patch.rect.y * stride + std::ptrdiff_t(patch.rect.x) * sourceBytesPerPixel;
        for (int row = 0; row < patch.rect.height; ++row)
            std::memcpy(to + row * stride, patch.pixels + row * patch.stride,
                        std::size_t(patch.rect.width) * sourceBytesPerPixel);
    }
}

} // namespace vantrell
