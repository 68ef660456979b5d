// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11PatchReader.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// What the desktop shows where no window is, also where something covers it. On the connection's thread; the
/// connection outlives it.
///
/// Nobody can ask the server for the root's background. Without a compositor a window of our own lies right
/// under the panels, below everything, and the server paints the root's background into it. A compositor
/// paints what a property of the root names.
class X11RootBackground {
public:
    /// The events that the root window must be asked for.
    static constexpr std::uint32_t rootEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;

    explicit X11RootBackground(const X11Connection &connection);
    ~X11RootBackground();
    X11RootBackground(const X11RootBackground &) = delete;
    X11RootBackground &operator=(const X11RootBackground &) = delete;

    /// The window of our own; it lies on the root while there is something to show.
    xcb_window_t window() const { return m_window; }

    /// True when the event says that the background is another one now.
    bool handles(const xcb_generic_event_t &event);

    /// Makes that part of the desktop readable; empty: none. Two round trips when something changed.
    void show(const PixelRect &part, bool hasCompositor);

    /// Where to read it from, in the desktop's pixels; none: it is black.
    std::optional<X11PatchReader::Cut> cut() const;

private:
    void showWindow();
    void copyNamed();
    void clear();

    const X11Connection *m_connection;
    xcb_atom_t m_named;
    xcb_window_t m_window;
    PixelRect m_part;
    bool m_hasCompositor = false;
    bool m_hasWindow = false;
    bool m_isStale = true;
    xcb_pixmap_t m_pixmap = XCB_NONE;
};

} // namespace vantrell
