// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/PointerPicture.h"
#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <xcb/xfixes.h>

#include <cstdint>
#include <expected>
#include <vector>

namespace vantrell {

/// The pointer's picture and place, drawn into captured pixels. Capture thread.
class X11Cursor {
public:
    /// Asks the connection to report changes of shape and movements of the device.
    static std::expected<X11Cursor, PlatformError> create(const X11Connection &connection);

    /// True when the event says that the pointer moved or changed; `hostTime` then takes the time of it.
    bool handles(const xcb_generic_event_t &event, double now, double &hostTime);

    /// Sends the questions of one frame; `finishUpdate` takes the answers.
    void beginUpdate(const X11Connection &connection);
    /// True when place or shape changed.
    bool finishUpdate(const X11Connection &connection);

    /// Where the picture lies on the desktop now; empty when there is none.
    const PixelRect &rect() const { return m_picture.rect; }

    /// Draws the part that lies on `area`, whose pixels are BGRX.
    void draw(const PixelRect &area, std::uint8_t *pixels, std::ptrdiff_t stride) const {
        m_picture.draw(area, pixels, stride);
    }

private:
    X11Cursor() = default;

    std::uint8_t m_firstFixesEvent = 0;
    std::uint8_t m_inputOpcode = 0;
    bool m_shapeStale = true;
    xcb_query_pointer_cookie_t m_placeCookie{};
    xcb_xfixes_get_cursor_image_cookie_t m_shapeCookie{};
    Point m_hotSpot;
    /// In the desktop's pixels.
    PointerPicture m_picture;
};

} // namespace vantrell
