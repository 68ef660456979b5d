// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <QRegion>

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
    /// What makes an event: the first drawing since it was last asked, or each where nothing was drawn since
    /// then (`place`).
    enum class Events { first, each };

    static std::expected<X11Damage, PlatformError> create(const X11Connection &connection,
                                                          xcb_window_t window, Events events = Events::first);

    /// What is damaged up to now is of no interest. A window counts as damaged whole when its watch begins.
    void forget() { m_lastQuestion = xcb_damage_subtract(m_xcb, m_damage, XCB_NONE, XCB_NONE).sequence; }

    /// Watches no longer. Before that the object's end leaves the server watching. `isThere`: the window has
    /// not been closed, which ends the watch itself.
    void end(bool isThere = true);

    /// True when the event says that there is damage; it then happened at `hostTime`.
    bool handles(const xcb_generic_event_t &event, double now, double &hostTime);
    Events events() const { return m_events; }
    /// Where it was that the last event told of; with the events `first` it is the whole window.
    const PixelRect &place() const { return m_place; }

    /// From now on it is not asked for what was drawn there, which makes one event at most.
    void leaveOut(const QRegion &part);
    /// Damage that no event has told yet is asked for as well.
    void expectDamage() { m_isDamaged = true; }
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
    Events m_events = Events::first;
    PixelRect m_place;
    /// All but what is left out; XCB_NONE: all.
    xcb_xfixes_region_t m_wanted = XCB_NONE;
    bool m_isDamaged = false;
    /// Its number among the connection's requests.
    std::optional<std::uint32_t> m_lastQuestion;
    std::optional<xcb_xfixes_fetch_region_cookie_t> m_asked;
};

} // namespace vantrell
