// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <QRegion>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantrell {

/// The windows that lie on the root, in their order, kept up to date by the root's events. It knows which of
/// them are this application's own panels, of whatever process: those that carry the property
/// `_VANTRELL_PANEL` when they are mapped, themselves or within a window manager's frame. On the connection's
/// thread; the connection outlives it.
class X11WindowStack {
public:
    struct Window {
        xcb_window_t id = XCB_NONE;
        /// With its border, on the desktop.
        PixelRect place;
        int border = 0;
        bool isMapped = false;
        /// It was there before us: whether it is a panel is asked also when it is not mapped.
        bool isUnknown = false;
        bool isPanel = false;
        /// What follows is known.
        bool isExamined = false;
        /// Has pixels that can be read: BGRX, or BGRA where it has alpha.
        bool hasPixels = false;
        bool hasAlpha = false;
        /// The part of `place` that it covers; none: all.
        std::optional<QRegion> shape;

        bool operator==(const Window &) const = default;
        /// What it covers, on the desktop.
        QRegion covers() const;
    };

    /// What an event has changed.
    enum class Change { nothing = 1, other, panels };

    /// The events that the root window must be asked for.
    static constexpr std::uint32_t rootEvents = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;

    /// The root's events are selected already. Nothing is known before `update`.
    explicit X11WindowStack(const X11Connection &connection);

    /// `panels` also when a window came that may be one, or one that lies over a panel has changed.
    Change handle(const xcb_generic_event_t &event);

    /// Learns what the events do not tell, in a few round trips when there is something.
    void update();

    /// From bottom to top, without those that the server itself lays there. Those not mapped are among them.
    const std::vector<Window> &windows() const { return m_windows; }
    /// Null when it is not there.
    const Window *find(xcb_window_t window) const;
    /// What lies above one of them covers, on the desktop.
    QRegion above(const Window &window) const;

    /// A window of the caller's own is no part of it. Before it is created.
    void ignore(xcb_window_t window) { m_ignored = window; }

private:
    struct Inquiry;

    void load();
    void examine();
    void findMarks();
    Change changed(const Window &window) const;
    Change place(const xcb_configure_notify_event_t &event);
    Change reparented(const xcb_reparent_notify_event_t &event);
    bool isForeign(xcb_window_t window) const;
    std::vector<Window>::iterator at(xcb_window_t window);

    const X11Connection *m_connection;
    xcb_atom_t m_mark;
    std::optional<std::uint8_t> m_shapeEvent;
    std::vector<Window> m_windows;
    /// The events no longer say how they lie.
    bool m_isLost = true;
    xcb_window_t m_ignored = XCB_NONE;
};

} // namespace vantrell
