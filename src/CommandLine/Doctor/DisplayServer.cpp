// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/DisplayServer.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include <xcb/xcb.h>

namespace vantrell {

namespace {

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

xcb_atom_t atomOf(xcb_connection_t *x, const std::string &name) {
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, std::uint16_t(name.size()), name.c_str()), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

bool isOwned(xcb_connection_t *x, const std::string &selection) {
    const Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(x, xcb_get_selection_owner(x, atomOf(x, selection)), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

std::string property(xcb_connection_t *x, xcb_window_t window, const std::string &name) {
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        x, xcb_get_property(x, 0, window, atomOf(x, name), XCB_GET_PROPERTY_TYPE_ANY, 0, 64), nullptr));
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            std::size_t(xcb_get_property_value_length(reply.get()))};
}

std::string windowManagerOf(xcb_connection_t *x, xcb_window_t root) {
    const std::string check = property(x, root, "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t window = XCB_WINDOW_NONE;
    if (check.size() != sizeof window)
        return {};
    std::memcpy(&window, check.data(), sizeof window);
    return property(x, window, "_NET_WM_NAME");
}

} // namespace

DisplayServer askDisplayServer() {
    DisplayServer server;
    int number = 0;
    const Connection connection(xcb_connect(nullptr, &number), &xcb_disconnect);
    xcb_connection_t *const x = connection.get();
    if (xcb_connection_has_error(x) != 0)
        return server;
    server.isReachable = true;
    const xcb_setup_t *const setup = xcb_get_setup(x);
    server.vendor.assign(xcb_setup_vendor(setup), std::size_t(xcb_setup_vendor_length(setup)));
    for (const char *const name : {"MIT-SHM", "DAMAGE", "XFIXES", "Composite", "RANDR", "XInputExtension",
                                   "SHAPE", "RENDER", "XKEYBOARD"}) {
        const Reply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
            x, xcb_query_extension(x, std::uint16_t(std::strlen(name)), name), nullptr));
        if (!reply || !reply->present)
            server.missing.emplace_back(name);
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (int skip = number; skip > 0 && screens.rem > 1; --skip)
        xcb_screen_next(&screens);
    server.windowManager = windowManagerOf(x, screens.data->root);
    server.hasCompositor = isOwned(x, "_NET_WM_CM_S" + std::to_string(number));
    server.hasTray = isOwned(x, "_NET_SYSTEM_TRAY_S" + std::to_string(number));
    return server;
}

} // namespace vantrell
