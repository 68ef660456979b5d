// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Desktop/X11Painter.h"

#include "TestSupport/FrameCode.h"

#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace vantrell::testing {

X11Painter::X11Painter() : m_connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(m_connection))
        throw std::runtime_error("no X server to paint on");
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_target = m_root;
    m_context = xcb_generate_id(m_connection);
    const std::uint32_t includeInferiors = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    xcb_create_gc(m_connection, m_context, m_root, XCB_GC_SUBWINDOW_MODE, &includeInferiors);
    sync();
}

X11Painter::~X11Painter() {
    xcb_disconnect(m_connection);
}

xcb_window_t X11Painter::openWindow(const PixelRect &pixels, const std::string &title,
                                    bool overrideRedirect) {
    m_target = xcb_generate_id(m_connection);
    const std::uint32_t values[] = {0, overrideRedirect, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_target, m_root, std::int16_t(pixels.x),
                      std::int16_t(pixels.y), std::uint16_t(pixels.width), std::uint16_t(pixels.height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_target, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        std::uint32_t(title.size()), title.data());
    const std::string windowClass = std::string("painter") + '\0' + "Painter" + '\0';
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_target, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        std::uint32_t(windowClass.size()), windowClass.data());
    xcb_map_window(m_connection, m_target);
    xcb_flush(m_connection);
    while (xcb_generic_event_t *event = xcb_wait_for_event(m_connection)) {
        const bool mapped = (event->response_type & 0x7f) == XCB_MAP_NOTIFY;
        std::free(event);
        if (mapped)
            break;
    }
    return m_target;
}

void X11Painter::closeWindow() {
    xcb_destroy_window(m_connection, m_target);
    m_target = m_root;
    sync();
}

void X11Painter::moveResize(const PixelRect &pixels) {
    const std::uint32_t values[] = {std::uint32_t(pixels.x), std::uint32_t(pixels.y),
                                    std::uint32_t(pixels.width), std::uint32_t(pixels.height)};
    xcb_configure_window(m_connection, m_target,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    sync();
}

void X11Painter::fill(const PixelRect &rect, std::uint32_t rgb) {
    xcb_change_gc(m_connection, m_context, XCB_GC_FOREGROUND, &rgb);
    const xcb_rectangle_t area{std::int16_t(rect.x), std::int16_t(rect.y), std::uint16_t(rect.width),
                               std::uint16_t(rect.height)};
    xcb_poly_fill_rectangle(m_connection, m_target, m_context, 1, &area);
    xcb_flush(m_connection);
}

void X11Painter::drawNumber(std::uint32_t number, int x, int y) {
    constexpr int stride = framecode::width * 4;
    std::uint8_t pixels[std::size_t(stride) * framecode::height];
    framecode::draw(number, pixels, stride);
    xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_target, m_context, framecode::width,
                  framecode::height, std::int16_t(x), std::int16_t(y), 0, 24, sizeof pixels, pixels);
    xcb_flush(m_connection);
}

void X11Painter::movePointer(int x, int y) {
    xcb_warp_pointer(m_connection, XCB_NONE, m_root, 0, 0, 0, 0, std::int16_t(x), std::int16_t(y));
    xcb_flush(m_connection);
}

void X11Painter::shapePointer(std::uint16_t glyph) {
    constexpr std::string_view name = "cursor";
    const xcb_font_t font = xcb_generate_id(m_connection);
    xcb_open_font(m_connection, font, std::uint16_t(name.size()), name.data());
    const xcb_cursor_t cursor = xcb_generate_id(m_connection);
    // Behind each shape comes its mask.
    xcb_create_glyph_cursor(m_connection, cursor, font, font, glyph, std::uint16_t(glyph + 1), 0, 0, 0,
                            0xffff, 0xffff, 0xffff);
    xcb_close_font(m_connection, font);
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_CURSOR, &cursor);
}

void X11Painter::sync() {
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

} // namespace vantrell::testing
