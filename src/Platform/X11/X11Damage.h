// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <expected>
#include <functional>
#include <optional>

namespace vantrell {

/// What is drawn into a window and its children (DAMAGE). One event tells that there is something; what it is
/// is asked for when it is wanted, so that a program that draws ten thousand letters wakes nobody twice.
/// Belongs to the connection's thread and ends before it.
class X11Damage {
public:
    static std::expected<X11Damage, PlatformError> create(const X11Connection &connection,
                                                          xcb_window_t window);

    /// What is damaged up to now is of no interest. A window counts as damaged whole when its watch begins.
    void forget() { xcb_damage_subtract(m_xcb, m_damage, XCB_NONE, XCB_NONE); }

    /// Watches no longer. Before that the object's end leaves the server watching.
    void end();

    /// True when the event says that there is damage; it then happened at `hostTime`.
    bool handles(const xcb_generic_event_t &event, double now, double &hostTime);

    /// Sends the question about what is damaged; nothing is asked when nothing is.
    void ask();
    /// Shows every damaged rectangle, in the window's coordinates. False when the connection is lost.
    bool answer(const std::function<void(const PixelRect &)> &damaged);

private:
    X11Damage() = default;

    xcb_connection_t *m_xcb = nullptr;
    std::uint8_t m_firstEvent = 0;
    xcb_damage_damage_t m_damage = XCB_NONE;
    xcb_xfixes_region_t m_region = XCB_NONE;
    bool m_isDamaged = false;
    std::optional<xcb_xfixes_fetch_region_cookie_t> m_asked;
};

} // namespace vantrell
