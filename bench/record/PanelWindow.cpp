// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "PanelWindow.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace vantrell::bench {

namespace {

constexpr int panelWidth = 420;
constexpr int panelHeight = 72;
constexpr int aboveBottom = 200;
/// Milliseconds.
constexpr int levelInterval = 66;

} // namespace

int showPanel(const std::filesystem::path &log) {
    xcb_connection_t *xcb = xcb_connect(nullptr, nullptr);
    const xcb_screen_t &screen = *xcb_setup_roots_iterator(xcb_get_setup(xcb)).data;
    const xcb_window_t window = xcb_generate_id(xcb);
    const std::uint32_t values[] = {screen.black_pixel, 1};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, screen.root,
                      std::int16_t((screen.width_in_pixels - panelWidth) / 2),
                      std::int16_t(screen.height_in_pixels - aboveBottom), panelWidth, panelHeight, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    constexpr std::string_view mark = "_VANTRELL_PANEL";
    xcb_intern_atom_reply_t *atom =
        xcb_intern_atom_reply(xcb, xcb_intern_atom(xcb, 0, std::uint16_t(mark.size()), mark.data()), nullptr);
    if (!atom)
        return 1;
    const std::uint32_t marked = 1;
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_CARDINAL, 32, 1, &marked);
    std::free(atom);
    xcb_map_window(xcb, window);
    const xcb_gcontext_t context = xcb_generate_id(xcb);
    xcb_create_gc(xcb, context, window, XCB_GC_FOREGROUND, &screen.white_pixel);
    std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    std::ofstream(log.string() + ".ready").put('\n');

    pollfd end{STDIN_FILENO, POLLIN, 0};
    for (int level = 0; ::poll(&end, 1, levelInterval) == 0; level = (level + 7) % 100) {
        xcb_clear_area(xcb, 0, window, 300, 20, 100, 30);
        const xcb_rectangle_t bar{300, 20, std::uint16_t(level + 1), 30};
        xcb_poly_fill_rectangle(xcb, window, context, 1, &bar);
        xcb_flush(xcb);
    }
    xcb_disconnect(xcb);
    return 0;
}

} // namespace vantrell::bench
