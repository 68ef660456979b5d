// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastPointer.h"

#include <spa/param/video/raw.h>

#include <cstring>

namespace vantrell {

namespace {

constexpr std::uint32_t largestPointer = 1024;

/// One pixel as premultiplied ARGB in a word; the format names the bytes' order in memory.
std::optional<std::uint32_t> argb(std::uint32_t format, const std::uint8_t *pixel) {
    const auto packed = [](std::uint8_t a, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
        return std::uint32_t(a) << 24 | std::uint32_t(r) << 16 | std::uint32_t(g) << 8 | b;
    };
    switch (format) {
    case SPA_VIDEO_FORMAT_RGBA:
        return packed(pixel[3], pixel[0], pixel[1], pixel[2]);
    case SPA_VIDEO_FORMAT_BGRA:
        return packed(pixel[3], pixel[2], pixel[1], pixel[0]);
    case SPA_VIDEO_FORMAT_ARGB:
        return packed(pixel[0], pixel[1], pixel[2], pixel[3]);
    case SPA_VIDEO_FORMAT_ABGR:
        return packed(pixel[0], pixel[3], pixel[2], pixel[1]);
    default:
        return std::nullopt;
    }
}

} // namespace

bool CastPointer::take(const PipeWireBuffer &buffer) {
    const spa_meta *meta = buffer.metas(SPA_META_Cursor);
    if (!meta || meta->size < sizeof(spa_meta_cursor))
        return false;
    const auto &cursor = *static_cast<const spa_meta_cursor *>(meta->data);
    const CastPointer before = *this;
    m_isShown = cursor.id != 0;
    if (m_isShown) {
        m_x = cursor.position.x;
        m_y = cursor.position.y;
        if (cursor.bitmap_offset >= sizeof(spa_meta_cursor))
            takeShape(cursor, meta->size);
    }
    m_picture.rect =
        m_isShown ? PixelRect{m_x - m_shape.x, m_y - m_shape.y, m_shape.width, m_shape.height} : PixelRect{};
    return m_isShown != before.m_isShown || m_x != before.m_x || m_y != before.m_y ||
           m_picture.rect != before.m_picture.rect || m_picture.shape != before.m_picture.shape;
}

std::optional<Point> CastPointer::place() const {
    return m_isShown ? std::optional(Point{double(m_x), double(m_y)}) : std::nullopt;
}

void CastPointer::takeShape(const spa_meta_cursor &cursor, std::size_t bytes) {
    const auto *start = reinterpret_cast<const std::uint8_t *>(&cursor);
    spa_meta_bitmap bitmap{};
    if (cursor.bitmap_offset + sizeof bitmap > bytes)
        return;
    std::memcpy(&bitmap, start + cursor.bitmap_offset, sizeof bitmap);
    const auto width = bitmap.size.width;
    const auto height = bitmap.size.height;
    if (width > largestPointer || height > largestPointer || bitmap.stride < 0)
        return;
    // Told without pixels, it is invisible.
    if (width == 0 || height == 0 || bitmap.offset < sizeof bitmap) {
        m_shape = {};
        m_picture.shape.clear();
        return;
    }
    const std::size_t stride = bitmap.stride > 0 ? std::size_t(bitmap.stride) : std::size_t(width) * 4;
    const std::size_t first = std::size_t(cursor.bitmap_offset) + bitmap.offset;
    if (stride < std::size_t(width) * 4 || first + (height - 1) * stride + std::size_t(width) * 4 > bytes)
        return;
    std::vector<std::uint32_t> shape;
    shape.reserve(std::size_t(width) * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto pixel = argb(bitmap.format, start + first + y * stride + std::size_t(x) * 4);
            if (!pixel)
                return;
            shape.push_back(*pixel);
        }
    }
    m_shape = {cursor.hotspot.x, cursor.hotspot.y, int(width), int(height)};
    m_picture.shape = std::move(shape);
}

} // namespace vantrell
