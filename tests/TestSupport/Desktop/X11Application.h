// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <xcb/xcb.h>

class QSocketNotifier;

namespace vantrell::testing {

/// A program with one window on DISPLAY, as programs are: it repaints what the server asks it to, and draws a
/// mark where it is clicked. Lives in the test's event loop, which must run for it to answer.
class X11Application {
public:
    struct Options {
        /// Where the window shall be; a window manager's frame comes around it.
        PixelRect pixels{50, 40, 200, 150};
        std::string title = "Pad";
        std::string instance = "pad";
        std::string windowClass = "Pad";
        /// 32 bits deep; `colour` is then premultiplied ARGB.
        bool hasAlpha = false;
        std::uint32_t colour = 0x3070b0;
        int borderWidth = 0;
        /// How long it takes to repaint.
        std::chrono::milliseconds slowness{0};
        /// Out of the window manager's reach, like a menu.
        bool overridesRedirect = false;
        /// Marked as a panel of the application that records.
        bool isPanel = false;
    };

    /// The window is on the screen and painted when this returns.
    explicit X11Application(const Options &options);
    X11Application() : X11Application(Options()) {}
    ~X11Application();
    X11Application(const X11Application &) = delete;
    X11Application &operator=(const X11Application &) = delete;

    xcb_window_t window() const { return m_window; }

    /// How often the server has asked for its content.
    int repaints() const { return m_repaints; }

    /// Where it was clicked or scrolled on: the desktop pixels in the middle of its marks, in order.
    const std::vector<Point> &marks() const { return m_marks; }
    static constexpr std::uint32_t markColour = 0xffffff;
    static constexpr int markReach = 2;

    void setText(const std::string &property, const std::string &type, const std::string &value);
    void setNumbers(const std::string &property, const std::string &type,
                    const std::vector<std::uint32_t> &values);
    xcb_atom_t atom(const std::string &name);

    void moveResize(const PixelRect &pixels);
    void raise();
    void lower();
    void map();
    void unmap();
    /// Draws into it, until the next repaint.
    void fill(const PixelRect &rect, std::uint32_t colour);
    /// Cuts the window to this part of it (in its own pixels).
    void cutShape(const PixelRect &part);
    void close();

private:
    void handleEvents();
    void paint();
    void stack(std::uint32_t mode);
    void sync();

    xcb_connection_t *m_connection;
    xcb_window_t m_root = 0;
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_context = 0;
    std::uint32_t m_colour;
    std::chrono::milliseconds m_slowness;
    int m_repaints = 0;
    std::vector<Point> m_marks;
    /// The marks in the window's own pixels.
    std::vector<PixelRect> m_drawn;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vantrell::testing
