// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// A window's property, asked for now and read later, so that many questions share one round trip. Must be
/// read once before it ends, on the connection's thread. A window that is gone has no properties.
class X11Property {
public:
    X11Property(const X11Connection &connection, xcb_window_t window, xcb_atom_t name);
    ~X11Property();
    X11Property(X11Property &&other) noexcept;
    X11Property &operator=(X11Property &&) = delete;
    X11Property(const X11Property &) = delete;
    X11Property &operator=(const X11Property &) = delete;

    /// Numbers, windows or atoms; empty when the property is missing or of another format.
    std::vector<std::uint32_t> numbers();

    /// Text as valid UTF-8, whatever its bytes were; none when the property is missing or empty.
    std::optional<std::string> text();

    /// The strings of a list with zero bytes between them (WM_CLASS).
    std::vector<std::string> strings();

private:
    XcbPointer<xcb_get_property_reply_t> take();

    const X11Connection *m_connection;
    xcb_get_property_cookie_t m_cookie;
};

} // namespace vantrell
