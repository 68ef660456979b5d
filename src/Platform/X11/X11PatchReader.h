// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/X11/ShmSegment.h"
#include "Support/Geometry.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vantrell {

/// Reads rectangles of drawables through memory that is shared with the X server, all in one round trip.
/// Belongs to the connection's thread and ends before it.
class X11PatchReader {
public:
    /// For pictures of that size. The connection outlives the reader.
    static std::expected<X11PatchReader, PlatformError> create(const X11Connection &connection,
                                                               PixelSize picture);

    /// Makes room for pictures of that size; nothing that was read before is valid any more.
    std::expected<void, PlatformError> reserve(PixelSize picture);

    /// A picture of the reader's client, cut out of a drawable.
    struct Cut {
        xcb_drawable_t drawable;
        PixelSize drawableSize;
        /// Where the picture's corner lies in the drawable; what lies outside of it is black.
        int x;
        int y;
    };

    /// Asks for rectangles of the picture, which altogether are no more pixels than there is room for; as
    /// often as wanted, of whatever drawables, before the answer is taken.
    void ask(const Cut &cut, std::span<const PixelRect> rects);
    /// All that was asked for, in that order. None when the server refused, which it does when a drawable
    /// has just changed its size.
    std::optional<std::span<FramePatch>> answer();
    /// Both at once.
    std::optional<std::span<FramePatch>> read(const Cut &cut, std::span<const PixelRect> rects);

    /// The pixels of a patch that `read` returned, to draw on.
    std::uint8_t *writable(const FramePatch &patch) const {
        return m_memory->data() + (patch.pixels - m_memory->data());
    }

private:
    explicit X11PatchReader(const X11Connection &connection) : m_connection(&connection) {}
    void request(const Cut &cut, const PixelRect &part, std::size_t offset);

    const X11Connection *m_connection;
    std::unique_ptr<ShmSegment> m_memory;
    std::vector<xcb_shm_get_image_cookie_t> m_requests;
    std::vector<FramePatch> m_patches;
    /// Of the next patch in the memory.
    std::size_t m_offset = 0;
};

} // namespace vantrell
