// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Connection.h"

#include "Platform/ScreenError.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <cmath>

namespace vantrell {

X11Connection::X11Connection(xcb_connection_t *connection, const xcb_screen_t *screen, int screenNumber)
    : m_connection(connection), m_screen(screen), m_screenNumber(screenNumber) {}

X11Connection::~X11Connection() {
    xcb_disconnect(m_connection);
}

std::expected<std::unique_ptr<X11Connection>, PlatformError>
X11Connection::open(const std::optional<std::string> &display) {
    int preferred = 0;
    xcb_connection_t *connection = xcb_connect(display ? display->c_str() : nullptr, &preferred);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return std::unexpected(
            screenError(ScreenErrorCode::noSession, "There is no display to record: no X server answers"));
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    int number = 0;
    for (; number < preferred && screens.rem > 1; ++number)
        xcb_screen_next(&screens);
    return std::unique_ptr<X11Connection>(new X11Connection(connection, screens.data, number));
}

std::expected<const xcb_query_extension_reply_t *, PlatformError>
X11Connection::require(xcb_extension_t *extension, const char *name) const {
    const xcb_query_extension_reply_t *data = xcb_get_extension_data(m_connection, extension);
    if (!data || !data->present)
        return std::unexpected(screenError(ScreenErrorCode::missingExtension,
                                           std::string("The display server lacks the extension ") + name));
    return data;
}

std::expected<const xcb_query_extension_reply_t *, PlatformError> X11Connection::requireXFixes() const {
    const auto extension = require(&xcb_xfixes_id, "XFIXES");
    if (extension)
        xcb_discard_reply(m_connection, xcb_xfixes_query_version(m_connection, 5, 0).sequence);
    return extension;
}

bool X11Connection::hasBgrxPixels(xcb_visualid_t visual) const {
    if (xcb_get_setup(m_connection)->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST)
        return false;
    for (auto depths = xcb_screen_allowed_depths_iterator(m_screen); depths.rem > 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == visual)
                return (depths.data->depth == 24 || depths.data->depth == 32) &&
                       visuals.data->red_mask == 0xff0000 && visuals.data->green_mask == 0xff00 &&
                       visuals.data->blue_mask == 0xff;
        }
    }
    return false;
}

xcb_atom_t X11Connection::atom(const std::string &name, bool create) const {
    const auto reply = xcbReply(
        m_connection, xcb_intern_atom(m_connection, !create, std::uint16_t(name.size()), name.data()),
        xcb_intern_atom_reply);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

PlatformError X11Connection::lostError() {
    return screenError(ScreenErrorCode::connectionLost, "The connection to the display server was lost");
}

double X11Connection::hostTime(xcb_timestamp_t serverTime, double now) {
    const auto nowMs = std::int64_t(std::floor(now * 1000));
    const auto age = std::int32_t(std::uint32_t(nowMs) - serverTime);
    // A server with another clock, or on another machine, cannot say when: then it was now.
    constexpr std::int32_t farOff = 1000;
    if (age < 0 || age > farOff)
        return now;
    // The server cuts the fraction of the millisecond off; it lies half a millisecond later in the mean.
    return std::min(now, double(nowMs - age) / 1000 + 0.0005);
}

} // namespace vantrell
