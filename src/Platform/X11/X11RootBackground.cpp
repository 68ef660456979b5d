// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11RootBackground.h"

#include "Platform/X11/X11Property.h"

#include <xcb/composite.h>
#include <xcb/xfixes.h>

#include <utility>

namespace vantrell {

X11RootBackground::X11RootBackground(const X11Connection &connection)
    : m_connection(&connection), m_named(connection.atom("_XROOTPMAP_ID", true)),
      m_window(xcb_generate_id(connection.xcb())) {}

X11RootBackground::~X11RootBackground() {
    clear();
}

bool X11RootBackground::handles(const xcb_generic_event_t &event) {
    if ((event.response_type & ~X11Connection::sentEventBit) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto &changed = reinterpret_cast<const xcb_property_notify_event_t &>(event);
    if (changed.window != m_connection->root() || changed.atom != m_named)
        return false;
    m_isStale = true;
    return true;
}

void X11RootBackground::clear() {
    xcb_connection_t *xcb = m_connection->xcb();
    if (std::exchange(m_hasWindow, false))
        xcb_destroy_window(xcb, m_window);
    if (m_pixmap != XCB_NONE)
        xcb_free_pixmap(xcb, std::exchange(m_pixmap, XCB_NONE));
}

void X11RootBackground::show(const PixelRect &part, bool hasCompositor) {
    if (!std::exchange(m_isStale, false) && part == m_part && hasCompositor == m_hasCompositor)
        return;
    clear();
    m_part = part;
    m_hasCompositor = hasCompositor;
    if (part.isEmpty())
        return;
    hasCompositor ? copyNamed() : showWindow();
}

void X11RootBackground::showWindow() {
    xcb_connection_t *xcb = m_connection->xcb();
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, m_window, m_connection->root(), std::int16_t(m_part.x),
                      std::int16_t(m_part.y), std::uint16_t(m_part.width), std::uint16_t(m_part.height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    m_hasWindow = true;
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(xcb, m_window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    // Clicks beside a panel's shape go to the desktop, as they always did.
    const xcb_xfixes_region_t nothing = xcb_generate_id(xcb);
    xcb_xfixes_create_region(xcb, nothing, 0, nullptr);
    xcb_xfixes_set_window_shape_region(xcb, m_window, XCB_SHAPE_SK_INPUT, 0, 0, nothing);
    xcb_xfixes_destroy_region(xcb, nothing);
    xcb_composite_redirect_window(xcb, m_window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_map_window(xcb, m_window);
    m_pixmap = xcb_generate_id(xcb);
    xcb_composite_name_window_pixmap(xcb, m_window, m_pixmap);
}

void X11RootBackground::copyNamed() {
    xcb_connection_t *xcb = m_connection->xcb();
    const auto named = X11Property(*m_connection, m_connection->root(), m_named).numbers();
    if (named.empty() || named.front() == XCB_NONE)
        return;
    const auto geometry = xcbReply(xcb, xcb_get_geometry(xcb, named.front()), xcb_get_geometry_reply);
    const std::uint8_t depth = m_connection->screen().root_depth;
    // The program that set it has taken it back, or it is another screen's.
    if (!geometry || geometry->depth != depth)
        return;
    m_pixmap = xcb_generate_id(xcb);
    xcb_create_pixmap(xcb, depth, m_pixmap, m_connection->root(), std::uint16_t(m_part.width),
                      std::uint16_t(m_part.height));
    // It repeats from the desktop's corner.
    const xcb_gcontext_t context = xcb_generate_id(xcb);
    const std::uint32_t values[] = {XCB_FILL_STYLE_TILED, named.front(), std::uint32_t(-m_part.x),
                                    std::uint32_t(-m_part.y)};
    xcb_create_gc(xcb, context, m_pixmap,
                  XCB_GC_FILL_STYLE | XCB_GC_TILE | XCB_GC_TILE_STIPPLE_ORIGIN_X |
                      XCB_GC_TILE_STIPPLE_ORIGIN_Y,
                  values);
    const xcb_rectangle_t all{0, 0, std::uint16_t(m_part.width), std::uint16_t(m_part.height)};
    xcb_poly_fill_rectangle(xcb, m_pixmap, context, 1, &all);
    xcb_free_gc(xcb, context);
}

std::optional<X11PatchReader::Cut> X11RootBackground::cut() const {
    if (m_pixmap == XCB_NONE)
        return std::nullopt;
    return X11PatchReader::Cut{
        .drawable = m_pixmap, .drawableSize = m_part.size(), .x = -m_part.x, .y = -m_part.y};
}

} // namespace vantrell
