// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <string>

#include <xcb/xcb.h>

namespace vantrell::testing {

/// A client that paints on a display: on the root window, or on a window of its own.
class X11Painter {
public:
    /// On the root window of DISPLAY.
    X11Painter();
    ~X11Painter();
    X11Painter(const X11Painter &) = delete;
    X11Painter &operator=(const X11Painter &) = delete;

    /// Makes and maps a window with that title and class, and paints there from now on. `pixels` is where it
    /// shall be; without a window manager it is there when this returns.
    xcb_window_t openWindow(const PixelRect &pixels, const std::string &title, bool overrideRedirect = true);
    void closeWindow();
    void moveResize(const PixelRect &pixels);

    void fill(const PixelRect &rect, std::uint32_t rgb);
    /// A number as FrameCode squares.
    void drawNumber(std::uint32_t number, int x, int y);
    void movePointer(int x, int y);
    /// A shape of the font "cursor", shown over the root window. The server shows it to others as long as
    /// this client lives.
    void shapePointer(std::uint16_t glyph);

    /// Returns when the server has done all that was asked for.
    void sync();

    xcb_connection_t *xcb() const { return m_connection; }
    xcb_window_t root() const { return m_root; }

private:
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    xcb_window_t m_target;
    xcb_gcontext_t m_context;
};

} // namespace vantrell::testing
