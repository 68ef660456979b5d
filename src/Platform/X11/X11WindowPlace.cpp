// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowPlace.h"

#include <utility>

namespace vantrell {

namespace {

/// The margins come as left, right, top, bottom; nonsense ones count as none.
PixelRect withoutShadow(const PixelRect &window, const std::vector<std::uint32_t> &margins) {
    if (margins.size() < 4)
        return window;
    const std::int64_t width = std::int64_t(window.width) - margins[0] - margins[1];
    const std::int64_t height = std::int64_t(window.height) - margins[2] - margins[3];
    if (width <= 0 || height <= 0)
        return window;
    return {window.x + int(margins[0]), window.y + int(margins[2]), int(width), int(height)};
}

} // namespace

X11WindowPlace::Question::Question(const X11Connection &connection, xcb_window_t window,
                                   xcb_atom_t shadowAtom)
    : m_connection(&connection), m_geometry(xcb_get_geometry(connection.xcb(), window)),
      m_attributes(xcb_get_window_attributes(connection.xcb(), window)),
      m_corner(xcb_translate_coordinates(connection.xcb(), window, connection.root(), 0, 0)),
      m_shadow(connection, window, shadowAtom) {}

X11WindowPlace::Question::Question(Question &&other) noexcept
    : m_connection(std::exchange(other.m_connection, nullptr)), m_geometry(other.m_geometry),
      m_attributes(other.m_attributes), m_corner(other.m_corner), m_shadow(std::move(other.m_shadow)) {}

X11WindowPlace::Question::~Question() {
    if (!m_connection)
        return;
    xcb_discard_reply(m_connection->xcb(), m_geometry.sequence);
    xcb_discard_reply(m_connection->xcb(), m_attributes.sequence);
    xcb_discard_reply(m_connection->xcb(), m_corner.sequence);
}

std::optional<X11WindowPlace> X11WindowPlace::Question::answer() {
    xcb_connection_t *xcb = std::exchange(m_connection, nullptr)->xcb();
    const auto geometry = xcbReply(xcb, m_geometry, xcb_get_geometry_reply);
    const auto attributes = xcbReply(xcb, m_attributes, xcb_get_window_attributes_reply);
    const auto corner = xcbReply(xcb, m_corner, xcb_translate_coordinates_reply);
    const std::vector<std::uint32_t> margins = m_shadow.numbers();
    if (!geometry || !attributes || !corner)
        return std::nullopt;
    X11WindowPlace place;
    place.window = {corner->dst_x, corner->dst_y, geometry->width, geometry->height};
    place.borderWidth = geometry->border_width;
    place.depth = geometry->depth;
    place.visual = attributes->visual;
    place.isViewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    place.isInputOnly = attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY;
    place.overridesRedirect = attributes->override_redirect != 0;
    place.content = withoutShadow(place.window, margins);
    return place;
}

std::optional<X11WindowPlace> X11WindowPlace::of(const X11Connection &connection, xcb_window_t window) {
    return Question(connection, window, connection.atom(shadowProperty)).answer();
}

} // namespace vantrell
