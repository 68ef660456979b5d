// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11PatchReader.h"

#include <cstring>
#include <utility>

namespace vantrell {

namespace {

constexpr int bytesPerPixel = 4;

std::size_t bytesOf(int width, int height) {
    return std::size_t(width) * std::size_t(height) * bytesPerPixel;
}

} // namespace

std::expected<X11PatchReader, PlatformError> X11PatchReader::create(const X11Connection &connection,
                                                                    PixelSize picture) {
    const auto shm = connection.require(&xcb_shm_id, "MIT-SHM");
    if (!shm)
        return std::unexpected(shm.error());
    X11PatchReader reader(connection);
    if (const auto reserved = reader.reserve(picture); !reserved)
        return std::unexpected(reserved.error());
    return reader;
}

std::expected<void, PlatformError> X11PatchReader::reserve(PixelSize picture) {
    // By the area and not by the sides: a picture that is narrower and taller may need less.
    const std::size_t bytes = bytesOf(picture.width, picture.height);
    if (m_memory && m_memory->size() >= bytes)
        return {};
    auto memory = ShmSegment::create(*m_connection, bytes);
    if (!memory)
        return std::unexpected(memory.error());
    m_memory = std::move(*memory);
    return {};
}

void X11PatchReader::request(const Cut &cut, const PixelRect &part, std::size_t offset) {
    m_requests.push_back(xcb_shm_get_image(m_connection->xcb(), cut.drawable, std::int16_t(part.x),
                                           std::int16_t(part.y), std::uint16_t(part.width),
                                           std::uint16_t(part.height), ~0u, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                           m_memory->id(), std::uint32_t(offset)));
}

void X11PatchReader::ask(const Cut &cut, std::span<const PixelRect> rects) {
    if (m_offset == 0)
        m_patches.clear();
    const PixelRect whole{0, 0, cut.drawableSize.width, cut.drawableSize.height};
    for (const PixelRect &rect : rects) {
        const PixelRect wanted{rect.x + cut.x, rect.y + cut.y, rect.width, rect.height};
        const PixelRect part = intersection(wanted, whole);
        std::uint8_t *pixels = m_memory->data() + m_offset;
        m_patches.push_back({rect, pixels, std::ptrdiff_t(rect.width) * bytesPerPixel});
        if (part == wanted) {
            request(cut, part, m_offset);
        } else {
            std::memset(pixels, 0, bytesOf(rect.width, rect.height));
            // The server packs what it writes: rows that reach over the edge come one by one.
            for (int y = part.y; y < part.bottom(); ++y)
                request(cut, {part.x, y, part.width, 1},
                        m_offset + bytesOf(rect.width, y - wanted.y) + bytesOf(part.x - wanted.x, 1));
        }
        m_offset += bytesOf(rect.width, rect.height);
    }
}

std::optional<std::span<FramePatch>> X11PatchReader::answer() {
    if (std::exchange(m_offset, 0) == 0)
        m_patches.clear();
    bool refused = false;
    for (const xcb_shm_get_image_cookie_t cookie : m_requests)
        refused |= !xcbReply(m_connection->xcb(), cookie, xcb_shm_get_image_reply);
    m_requests.clear();
    if (refused)
        return std::nullopt;
    return m_patches;
}

std::optional<std::span<FramePatch>> X11PatchReader::read(const Cut &cut, std::span<const PixelRect> rects) {
    ask(cut, rects);
    return answer();
}

} // namespace vantrell
