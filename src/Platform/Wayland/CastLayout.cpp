// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastLayout.h"

#include <utility>

namespace vantrell {

namespace {

constexpr std::ptrdiff_t bytesOfPixel = 4;

PixelRect cropOf(const PipeWireBuffer &buffer, PixelSize size) {
    const PixelRect whole{0, 0, size.width, size.height};
    const auto *crop = buffer.meta<spa_meta_region>(SPA_META_VideoCrop);
    if (!crop || !spa_meta_region_is_valid(crop))
        return whole;
    const spa_region &region = crop->region;
    const PixelRect part = intersection(
        {region.position.x, region.position.y, int(region.size.width), int(region.size.height)}, whole);
    return part.isEmpty() ? whole : part;
}

} // namespace

CastLayout::CastLayout(const PipeWireBuffer &buffer, PixelSize size) : m_crop(cropOf(buffer, size)) {
    const auto *told = buffer.meta<spa_meta_videotransform>(SPA_META_VideoTransform);
    switch (told ? told->transform : SPA_META_TRANSFORMATION_None) {
    case SPA_META_TRANSFORMATION_90:
        m_isTurned = m_isMirroredY = true;
        break;
    case SPA_META_TRANSFORMATION_180:
        m_isMirroredX = m_isMirroredY = true;
        break;
    case SPA_META_TRANSFORMATION_270:
        m_isTurned = m_isMirroredX = true;
        break;
    case SPA_META_TRANSFORMATION_Flipped:
        m_isMirroredX = true;
        break;
    case SPA_META_TRANSFORMATION_Flipped90:
        m_isTurned = true;
        break;
    case SPA_META_TRANSFORMATION_Flipped180:
        m_isMirroredY = true;
        break;
    case SPA_META_TRANSFORMATION_Flipped270:
        m_isTurned = m_isMirroredX = m_isMirroredY = true;
        break;
    default:
        break;
    }
}

PixelSize CastLayout::size() const {
    return m_isTurned ? PixelSize{m_crop.height, m_crop.width} : m_crop.size();
}

PixelRect CastLayout::seen(const PixelRect &inBuffer) const {
    PixelRect rect = inBuffer;
    rect.x = m_isMirroredX ? m_crop.right() - inBuffer.right() : inBuffer.x - m_crop.x;
    rect.y = m_isMirroredY ? m_crop.bottom() - inBuffer.bottom() : inBuffer.y - m_crop.y;
    if (m_isTurned) {
        std::swap(rect.x, rect.y);
        std::swap(rect.width, rect.height);
    }
    return rect;
}

CastLayout::Walk CastLayout::walk(std::ptrdiff_t stride) const {
    const int x = m_isMirroredX ? m_crop.right() - 1 : m_crop.x;
    const int y = m_isMirroredY ? m_crop.bottom() - 1 : m_crop.y;
    const std::ptrdiff_t across = m_isMirroredX ? -bytesOfPixel : bytesOfPixel;
    const std::ptrdiff_t down = m_isMirroredY ? -stride : stride;
    return {y * stride + x * bytesOfPixel, m_isTurned ? down : across, m_isTurned ? across : down};
}

} // namespace vantrell
