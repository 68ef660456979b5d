// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Desktop/X11Session.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace vantrell::testing {

namespace {

constexpr auto startPatience = std::chrono::seconds(30);

/// Reads the display number that the server reports once it takes connections.
std::string readDisplayNumber(int fd) {
    std::string text;
    while (text.find('\n') == std::string::npos) {
        pollfd waiting{fd, POLLIN, 0};
        if (::poll(&waiting, 1, int(std::chrono::milliseconds(startPatience).count())) <= 0)
            throw std::runtime_error("Xvfb did not start");
        char byte = 0;
        if (::read(fd, &byte, 1) != 1)
            throw std::runtime_error("Xvfb ended while starting");
        text += byte;
    }
    return text.substr(0, text.find('\n'));
}

/// Maps a window of its own and waits a little until it is managed.
bool isWindowManaged(xcb_connection_t *connection, xcb_atom_t state) {
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection, window);
    bool managed = false;
    for (int look = 0; look < 20 && !managed; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const auto cookie = xcb_get_property(connection, 0, window, state, state, 0, 1);
        xcb_get_property_reply_t *reply = xcb_get_property_reply(connection, cookie, nullptr);
        managed = reply && reply->type == state;
        std::free(reply);
    }
    xcb_destroy_window(connection, window);
    xcb_flush(connection);
    return managed;
}

/// The window manager announces itself before it takes windows, and loses those that come in between: one is
/// sent ahead until it is taken.
void waitForWindowManager(xcb_connection_t *connection) {
    constexpr std::string_view name = "WM_STATE";
    xcb_intern_atom_reply_t *state = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, std::uint16_t(name.size()), name.data()), nullptr);
    const auto deadline = std::chrono::steady_clock::now() + startPatience;
    bool managed = false;
    while (state && !managed && std::chrono::steady_clock::now() < deadline)
        managed = isWindowManaged(connection, state->atom);
    std::free(state);
    if (!managed)
        throw std::runtime_error("openbox did not start");
}

/// It owns this selection while it redirects the windows.
void waitForCompositor() {
    constexpr std::string_view name = "_NET_WM_CM_S0";
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    xcb_intern_atom_reply_t *selection = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, std::uint16_t(name.size()), name.data()), nullptr);
    const auto deadline = std::chrono::steady_clock::now() + startPatience;
    bool isOwned = false;
    while (selection && !isOwned && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        xcb_get_selection_owner_reply_t *owner = xcb_get_selection_owner_reply(
            connection, xcb_get_selection_owner(connection, selection->atom), nullptr);
        isOwned = owner && owner->owner != XCB_NONE;
        std::free(owner);
    }
    std::free(selection);
    xcb_disconnect(connection);
    if (!isOwned)
        throw std::runtime_error("picom did not start");
}

} // namespace

X11Session::X11Session(const Options &options) {
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    const std::string screen = std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
    std::vector<std::string> command{options.isOnWayland ? "Xwayland" : "Xvfb",
                                     "-displayfd",
                                     std::to_string(writeEnd.get()),
                                     "-noreset",
                                     "-nolisten",
                                     "tcp"};
    if (options.isOnWayland)
        command.emplace_back("-shm");
    else
        command.insert(command.end(), {"-screen", "0", screen});
    command.insert(command.end(), options.serverArguments.begin(), options.serverArguments.end());
    m_server = std::make_unique<ChildProcess>(command, ChildProcess::Environment{}, writeEnd.get());
    writeEnd.reset();
    m_display = ":" + readDisplayNumber(readEnd.get());

    if (const char *before = std::getenv("DISPLAY"))
        m_previousDisplay = before;
    ::setenv("DISPLAY", m_display.c_str(), 1);
    if (options.windowManager) {
        m_windowManager = std::make_unique<ChildProcess>(std::vector<std::string>{"openbox", "--sm-disable"});
        m_forerunner.reset(xcb_connect(nullptr, nullptr), xcb_disconnect);
        waitForWindowManager(m_forerunner.get());
    }
    if (options.compositor) {
        m_compositor = std::make_unique<ChildProcess>(
            std::vector<std::string>{"picom", "--backend", "xrender", "--config", "/dev/null", "--fading"});
        waitForCompositor();
    }
}

X11Session::~X11Session() {
    m_compositor.reset();
    m_windowManager.reset();
    m_forerunner.reset();
    m_server.reset();
    if (m_previousDisplay.empty())
        ::unsetenv("DISPLAY");
    else
        ::setenv("DISPLAY", m_previousDisplay.c_str(), 1);
}

int X11Session::run(const std::vector<std::string> &command) const {
    const ChildProcess process(command, {{"DISPLAY", m_display}});
    int status = 0;
    ::waitpid(process.pid(), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void X11Session::killCompositor() {
    m_compositor->signal(SIGKILL);
    m_compositor.reset();
}

void X11Session::suspend() {
    m_server->signal(SIGSTOP);
}

void X11Session::resume() {
    m_server->signal(SIGCONT);
}

void X11Session::kill() {
    m_server->signal(SIGKILL);
    m_server.reset();
}

} // namespace vantrell::testing
