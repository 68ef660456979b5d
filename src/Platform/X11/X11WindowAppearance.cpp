// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowAppearance.h"

#include "Platform/X11/X11WindowPlace.h"
#include "Platform/X11/X11WindowStack.h"

#include <algorithm>
#include <cstdlib>
#include <span>

namespace vantrell {

namespace {

/// The window on the root that holds this one: itself, or a window manager's frame.
xcb_window_t windowOnRoot(const X11Connection &connection, xcb_window_t window) {
    // Frames are a few windows deep; a tree that changes meanwhile must not lead us round.
    for (int depth = 0; depth < 16; ++depth) {
        const auto tree =
            xcbReply(connection.xcb(), xcb_query_tree(connection.xcb(), window), xcb_query_tree_reply);
        if (!tree || tree->parent == XCB_NONE)
            return XCB_NONE;
        if (tree->parent == connection.root())
            return window;
        window = tree->parent;
    }
    return XCB_NONE;
}

} // namespace

QImage x11WindowIcon(const X11Connection &connection, std::uint32_t window) {
    constexpr int wantedSide = 48;
    constexpr std::uint32_t mostSide = 512, most = 1 << 20;
    const auto reply = xcbReply(connection.xcb(),
                                xcb_get_property(connection.xcb(), 0, window, connection.atom("_NET_WM_ICON"),
                                                 XCB_ATOM_CARDINAL, 0, most),
                                xcb_get_property_reply);
    if (!reply || reply->format != 32)
        return {};
    // Several pictures one after the other, each behind its width and height.
    std::span rest(static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get())),
                   std::size_t(xcb_get_property_value_length(reply.get())) / 4);
    QImage best;
    while (rest.size() > 2) {
        const std::uint32_t width = rest[0], height = rest[1];
        rest = rest.subspan(2);
        if (width == 0 || height == 0 || width > mostSide || height > mostSide ||
            rest.size() < std::size_t(width) * height)
            break;
        const QImage icon(reinterpret_cast<const uchar *>(rest.data()), int(width), int(height),
                          QImage::Format_ARGB32);
        if (best.isNull() || std::abs(icon.width() - wantedSide) < std::abs(best.width() - wantedSide))
            best = icon.copy();
        rest = rest.subspan(std::size_t(width) * height);
    }
    return best;
}

std::optional<QRegion> x11VisiblePart(std::uint32_t window) {
    // The stack selects events that nobody would read: they go with a connection of its own.
    const auto opened = X11Connection::open();
    if (!opened)
        return std::nullopt;
    const X11Connection &connection = **opened;
    const auto place = X11WindowPlace::of(connection, window);
    const xcb_window_t onRoot = windowOnRoot(connection, window);
    if (!place || onRoot == XCB_NONE)
        return std::nullopt;
    X11WindowStack stack(connection);
    stack.update();
    const auto &windows = stack.windows();
    const auto own = std::ranges::find(windows, onRoot, &X11WindowStack::Window::id);
    if (own == windows.end())
        return std::nullopt;
    const PixelRect &content = place->content;
    QRegion visible = QRegion(content.x, content.y, content.width, content.height) & own->covers();
    for (auto above = own + 1; above != windows.end(); ++above) {
        if (above->isMapped && above->hasPixels && !above->hasAlpha && !above->isPanel)
            visible -= above->covers();
    }
    return visible;
}

} // namespace vantrell
