// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/ChildProcess.h"

#include <memory>
#include <string>

struct xcb_connection_t;

namespace vantrell::testing {

/// A virtual X display of a test's own, empty and black, gone with the object. DISPLAY of this process names
/// it while it lives.
class X11Session {
public:
    struct Options {
        int width = 640;
        int height = 480;
        /// In a window of the Wayland desktop that WAYLAND_DISPLAY names; as large as that.
        bool isOnWayland = false;
        /// Starts openbox and waits until it manages windows.
        bool windowManager = false;
        /// Starts picom, with fading, and waits until it draws the desktop.
        bool compositor = false;
        /// More arguments for the server, such as {"-extension", "DAMAGE"}.
        std::vector<std::string> serverArguments;
    };

    explicit X11Session(const Options &options);
    X11Session() : X11Session(Options()) {}
    ~X11Session();

    /// ":99".
    const std::string &display() const { return m_display; }

    /// Runs a program on the display and waits for its end; its exit code.
    int run(const std::vector<std::string> &command) const;

    /// Ends the compositor as a crash does.
    void killCompositor();

    /// Ends the server before its time.
    void kill();
    /// Alive, but answers nothing.
    void suspend();
    void resume();

private:
    std::string m_display;
    std::string m_previousDisplay;
    std::unique_ptr<ChildProcess> m_server;
    std::unique_ptr<ChildProcess> m_windowManager;
    /// Of the window that was sent ahead. Once closed, the next client's first window would have its number,
    /// and a window manager that lags would do to it what it still has to do to that one.
    std::shared_ptr<xcb_connection_t> m_forerunner;
    std::unique_ptr<ChildProcess> m_compositor;
};

} // namespace vantrell::testing
