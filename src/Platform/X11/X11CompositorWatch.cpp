// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11CompositorWatch.h"

#include <xcb/xfixes.h>

#include <string>

namespace vantrell {

X11CompositorWatch::X11CompositorWatch(const X11Connection &connection)
    : m_selection(connection.atom("_NET_WM_CM_S" + std::to_string(connection.screenNumber()), true)) {
    xcb_connection_t *xcb = connection.xcb();
    if (const auto fixes = connection.requireXFixes()) {
        m_event = std::uint8_t((*fixes)->first_event + XCB_XFIXES_SELECTION_NOTIFY);
        xcb_xfixes_select_selection_input(xcb, connection.root(), m_selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    const auto owner =
        xcbReply(xcb, xcb_get_selection_owner(xcb, m_selection), xcb_get_selection_owner_reply);
    m_isRunning = owner && owner->owner != XCB_NONE;
}

bool X11CompositorWatch::handles(const xcb_generic_event_t &event) {
    if (!m_event || (event.response_type & ~X11Connection::sentEventBit) != *m_event)
        return false;
    const auto &changed = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
    if (changed.selection != m_selection)
        return false;
    m_isRunning = changed.owner != XCB_NONE;
    return true;
}

} // namespace vantrell
