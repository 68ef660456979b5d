// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace vantrell {

/// What xcb hands out and wants to have freed: replies, events, errors.
struct XcbFree {
    void operator()(void *memory) const { std::free(memory); }
};

template <typename T>
using XcbPointer = std::unique_ptr<T, XcbFree>;

/// Waits for the answer to a request: null when the server refused or is gone. `take` is the request's own
/// function: xcbReply(xcb, xcb_get_geometry(xcb, window), xcb_get_geometry_reply).
template <typename Cookie, typename Reply>
XcbPointer<Reply> xcbReply(xcb_connection_t *xcb, Cookie cookie,
                           Reply *(*take)(xcb_connection_t *, Cookie, xcb_generic_error_t **)) {
    xcb_generic_error_t *error = nullptr;
    XcbPointer<Reply> reply(take(xcb, cookie, &error));
    const XcbPointer<xcb_generic_error_t> refusal(error);
    return reply;
}

} // namespace vantrell
