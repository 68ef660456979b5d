// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/XcbPointers.h"
#include "Support/PlatformError.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// One connection to an X server, its default screen and its extensions. Thread-bound.
class X11Connection {
public:
    /// Set in an event's type when a client and not the server sent it.
    static constexpr std::uint8_t sentEventBit = 0x80;

    /// `display` as in the environment variable DISPLAY; absent: that variable.
    static std::expected<std::unique_ptr<X11Connection>, PlatformError>
    open(const std::optional<std::string> &display = std::nullopt);
    ~X11Connection();
    X11Connection(const X11Connection &) = delete;
    X11Connection &operator=(const X11Connection &) = delete;

    xcb_connection_t *xcb() const { return m_connection; }
    const xcb_screen_t &screen() const { return *m_screen; }
    xcb_window_t root() const { return m_screen->root; }
    /// Which of the server's screens it is.
    int screenNumber() const { return m_screenNumber; }
    int fd() const { return xcb_get_file_descriptor(m_connection); }

    /// The extension's data, or an error whose sentence names it.
    std::expected<const xcb_query_extension_reply_t *, PlatformError> require(xcb_extension_t *extension,
                                                                              const char *name) const;

    /// XFIXES, whose version has been agreed on: the server refuses whatever a client asks for before that.
    std::expected<const xcb_query_extension_reply_t *, PlatformError> requireXFixes() const;

    /// Pixels of that visual are blue, green, red, and unused or alpha: what everything after the capture
    /// works on.
    bool hasBgrxPixels(xcb_visualid_t visual) const;

    /// Zero when there is no such atom and `create` is off.
    xcb_atom_t atom(const std::string &name, bool create = false) const;

    /// Set once the server has gone or the connection has broken.
    bool isBroken() const { return xcb_connection_has_error(m_connection) != 0; }
    static PlatformError lostError();

    /// Host time of a server time stamp (milliseconds, 32 bits, the same clock): at most `now`.
    static double hostTime(xcb_timestamp_t serverTime, double now);

private:
    X11Connection(xcb_connection_t *connection, const xcb_screen_t *screen, int screenNumber);

    xcb_connection_t *m_connection;
    const xcb_screen_t *m_screen;
    int m_screenNumber;
};

} // namespace vantrell
