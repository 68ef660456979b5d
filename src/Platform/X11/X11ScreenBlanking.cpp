// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11ScreenBlanking.h"

#include <xcb/screensaver.h>

namespace vantrell {

void X11ScreenBlanking::suspend(bool suspended) {
    m_x11.reset();
    if (!suspended)
        return;
    auto connection = X11Connection::open();
    if (!connection || !(*connection)->require(&xcb_screensaver_id, "MIT-SCREEN-SAVER"))
        return;
    m_x11 = std::move(*connection);
    xcb_discard_reply(m_x11->xcb(), xcb_screensaver_query_version(m_x11->xcb(), 1, 1).sequence);
    xcb_screensaver_suspend(m_x11->xcb(), 1);
    xcb_flush(m_x11->xcb());
}

} // namespace vantrell
