// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowStack.h"

#include "Platform/X11/X11Property.h"

#include <xcb/shape.h>

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

/// How far below its frame a window manager puts an application's window.
constexpr int deepestMark = 2;
constexpr std::uint8_t alphaDepth = 32;

template <typename Event>
const Event &as(const xcb_generic_event_t &event) {
    return reinterpret_cast<const Event &>(event);
}

/// The bounding shape, relative to the corner of the window's border.
std::optional<QRegion> boundingShape(const xcb_shape_get_rectangles_reply_t *reply, const PixelRect &place,
                                     int border) {
    if (!reply)
        return std::nullopt;
    QRegion shape;
    const xcb_rectangle_t *rects = xcb_shape_get_rectangles_rectangles(reply);
    for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(reply); ++i)
        shape += QRect(rects[i].x + border, rects[i].y + border, rects[i].width, rects[i].height);
    const QRegion whole(0, 0, place.width, place.height);
    shape &= whole;
    return shape == whole ? std::nullopt : std::optional(shape);
}

} // namespace

QRegion X11WindowStack::Window::covers() const {
    if (shape)
        return shape->translated(place.x, place.y);
    return {place.x, place.y, place.width, place.height};
}

/// The questions about one window that are under way.
struct X11WindowStack::Inquiry {
    Inquiry(const X11Connection &connection, xcb_window_t window, bool asksShape)
        : id(window), attributes(xcb_get_window_attributes(connection.xcb(), window)),
          geometry(xcb_get_geometry(connection.xcb(), window)) {
        if (asksShape) {
            xcb_shape_select_input(connection.xcb(), window, 1);
            shape = xcb_shape_get_rectangles(connection.xcb(), window, XCB_SHAPE_SK_BOUNDING);
        }
    }

    xcb_window_t id;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    std::optional<xcb_shape_get_rectangles_cookie_t> shape;
};

X11WindowStack::X11WindowStack(const X11Connection &connection)
    : m_connection(&connection), m_mark(connection.atom("_VANTRELL_PANEL", true)) {
    const auto shapes = connection.require(&xcb_shape_id, "SHAPE");
    if (shapes)
        m_shapeEvent = std::uint8_t((*shapes)->first_event + XCB_SHAPE_NOTIFY);
}

std::vector<X11WindowStack::Window>::iterator X11WindowStack::at(xcb_window_t window) {
    return std::ranges::find(m_windows, window, &Window::id);
}

const X11WindowStack::Window *X11WindowStack::find(xcb_window_t window) const {
    const auto found = std::ranges::find(m_windows, window, &Window::id);
    return found == m_windows.end() ? nullptr : &*found;
}

QRegion X11WindowStack::above(const Window &window) const {
    QRegion above;
    for (auto each = m_windows.rbegin(); each != m_windows.rend() && each->id != window.id; ++each) {
        if (each->isMapped)
            above += each->covers();
    }
    return above;
}

bool X11WindowStack::isForeign(xcb_window_t window) const {
    // What no client has made is the server's own: the overlay on which compositors draw the whole desktop.
    const std::uint32_t owner = ~xcb_get_setup(m_connection->xcb())->resource_id_mask;
    return window == m_ignored || (window & owner) == (m_connection->root() & owner);
}

X11WindowStack::Change X11WindowStack::changed(const Window &window) const {
    if (window.isPanel || (window.isMapped && !window.isExamined))
        return Change::panels;
    // What lies over a panel and goes leaves it to be seen.
    for (const Window &below : m_windows) {
        if (below.id == window.id)
            break;
        if (below.isPanel && below.isMapped && !intersection(below.place, window.place).isEmpty())
            return Change::panels;
    }
    return Change::other;
}

X11WindowStack::Change X11WindowStack::handle(const xcb_generic_event_t &event) {
    const xcb_window_t root = m_connection->root();
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    if (m_shapeEvent && type == *m_shapeEvent) {
        const auto window = at(as<xcb_shape_notify_event_t>(event).affected_window);
        if (window == m_windows.end())
            return Change::nothing;
        window->isExamined = false;
        return changed(*window);
    }
    switch (type) {
    case XCB_CREATE_NOTIFY: {
        const auto &created = as<xcb_create_notify_event_t>(event);
        if (created.parent != root || isForeign(created.window) || at(created.window) != m_windows.end())
            return Change::nothing;
        const int edges = 2 * created.border_width;
        m_windows.push_back({.id = created.window,
                             .place = {created.x, created.y, created.width + edges, created.height + edges},
                             .border = created.border_width});
        return Change::nothing;
    }
    case XCB_DESTROY_NOTIFY:
    case XCB_UNMAP_NOTIFY: {
        const auto &gone = as<xcb_unmap_notify_event_t>(event);
        const auto window = gone.event == root ? at(gone.window) : m_windows.end();
        if (window == m_windows.end())
            return Change::nothing;
        const Change change = window->isMapped ? changed(*window) : Change::nothing;
        window->isMapped = false;
        if (type == XCB_DESTROY_NOTIFY)
            m_windows.erase(window);
        return change;
    }
    case XCB_MAP_NOTIFY: {
        const auto &mapped = as<xcb_map_notify_event_t>(event);
        const auto window = mapped.event == root ? at(mapped.window) : m_windows.end();
        if (window == m_windows.end())
            return Change::nothing;
        window->isMapped = true;
        window->isExamined = false;
        return Change::panels;
    }
    case XCB_CONFIGURE_NOTIFY:
        return place(as<xcb_configure_notify_event_t>(event));
    case XCB_GRAVITY_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
        m_isLost = true;
        return Change::panels;
    case XCB_REPARENT_NOTIFY:
        return reparented(as<xcb_reparent_notify_event_t>(event));
    default:
        return Change::nothing;
    }
}

X11WindowStack::Change X11WindowStack::place(const xcb_configure_notify_event_t &event) {
    const auto window = event.event == m_connection->root() ? at(event.window) : m_windows.end();
    if (window == m_windows.end())
        return Change::nothing;
    const int edges = 2 * event.border_width;
    const PixelRect place{event.x, event.y, event.width + edges, event.height + edges};
    const Change left = window->isMapped ? changed(*window) : Change::nothing;
    // What it covers goes with its size.
    if (place.size() != window->place.size() && window->shape)
        window->isExamined = false;
    window->place = place;
    window->border = event.border_width;

    const Window moved = *window;
    auto to = m_windows.erase(window);
    if (event.above_sibling == XCB_NONE) {
        to = m_windows.begin();
    } else if (const auto below = at(event.above_sibling); below != m_windows.end()) {
        to = std::next(below);
    } else if (!isForeign(event.above_sibling)) {
        m_isLost = true;
    }
    const Change come = changed(*m_windows.insert(to, moved));
    if (m_isLost)
        return Change::panels;
    return left == Change::other ? come : left;
}

X11WindowStack::Change X11WindowStack::reparented(const xcb_reparent_notify_event_t &event) {
    const xcb_window_t root = m_connection->root();
    if (event.event != root)
        return Change::nothing;
    if (event.parent == root) {
        m_isLost = true;
        return Change::panels;
    }
    Change change = Change::nothing;
    if (const auto window = at(event.window); window != m_windows.end()) {
        change = window->isMapped ? changed(*window) : Change::nothing;
        m_windows.erase(window);
    }
    // The frame that it is in now may be one of a panel.
    if (const auto frame = at(event.parent); frame != m_windows.end()) {
        frame->isExamined = false;
        if (frame->isMapped)
            change = Change::panels;
    }
    return change;
}

void X11WindowStack::update() {
    if (m_isLost)
        load();
    examine();
}

void X11WindowStack::load() {
    m_isLost = false;
    xcb_connection_t *xcb = m_connection->xcb();
    const auto tree = xcbReply(xcb, xcb_query_tree(xcb, m_connection->root()), xcb_query_tree_reply);
    if (!tree)
        return;
    m_windows.clear();
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    std::vector<std::pair<xcb_get_geometry_cookie_t, xcb_get_window_attributes_cookie_t>> questions;
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (isForeign(children[i]))
            continue;
        m_windows.push_back({.id = children[i], .isUnknown = true});
        questions.emplace_back(xcb_get_geometry(xcb, children[i]),
                               xcb_get_window_attributes(xcb, children[i]));
    }
    for (std::size_t i = 0; i < m_windows.size(); ++i) {
        const auto geometry = xcbReply(xcb, questions[i].first, xcb_get_geometry_reply);
        const auto attributes = xcbReply(xcb, questions[i].second, xcb_get_window_attributes_reply);
        // The event that tells of its end is on its way.
        if (!geometry || !attributes)
            continue;
        Window &window = m_windows[i];
        window.border = geometry->border_width;
        window.place = {geometry->x, geometry->y, geometry->width + 2 * window.border,
                        geometry->height + 2 * window.border};
        window.isMapped = attributes->map_state != XCB_MAP_STATE_UNMAPPED;
    }
}

void X11WindowStack::examine() {
    xcb_connection_t *xcb = m_connection->xcb();
    const auto isDue = [](const Window &window) { return window.isMapped && !window.isExamined; };
    if (std::ranges::any_of(m_windows,
                            [&](const Window &window) { return isDue(window) || window.isUnknown; }))
        findMarks();
    std::vector<Inquiry> inquiries;
    for (const Window &window : m_windows) {
        if (isDue(window))
            inquiries.emplace_back(*m_connection, window.id, m_shapeEvent.has_value());
    }
    for (const Inquiry &inquiry : inquiries) {
        const auto attributes = xcbReply(xcb, inquiry.attributes, xcb_get_window_attributes_reply);
        const auto geometry = xcbReply(xcb, inquiry.geometry, xcb_get_geometry_reply);
        XcbPointer<xcb_shape_get_rectangles_reply_t> shape;
        if (inquiry.shape)
            shape = xcbReply(xcb, *inquiry.shape, xcb_shape_get_rectangles_reply);
        Window &window = *at(inquiry.id);
        window.isExamined = true;
        window.hasPixels = attributes && geometry && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
                           m_connection->hasBgrxPixels(attributes->visual);
        window.hasAlpha = geometry && geometry->depth == alphaDepth;
        window.shape = boundingShape(shape.get(), window.place, window.border);
        // It covers nothing.
        if (attributes && attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            window.shape = QRegion();
    }
}

void X11WindowStack::findMarks() {
    xcb_connection_t *xcb = m_connection->xcb();
    struct Branch {
        xcb_window_t top;
        xcb_window_t window;
    };
    struct Question {
        Branch branch;
        X11Property mark;
        std::optional<xcb_query_tree_cookie_t> tree;
    };
    std::vector<Branch> level;
    for (Window &window : m_windows) {
        // One that was mapped until a moment ago may be a panel that a compositor fades out.
        if (!std::exchange(window.isUnknown, false) && (!window.isMapped || window.isExamined))
            continue;
        window.isPanel = false;
        level.push_back({window.id, window.id});
    }
    for (int depth = 0; depth <= deepestMark && !level.empty(); ++depth) {
        std::vector<Question> questions;
        for (const Branch &branch : level) {
            X11Property mark(*m_connection, branch.window, m_mark);
            questions.push_back({branch, std::move(mark), std::nullopt});
            if (depth < deepestMark)
                questions.back().tree = xcb_query_tree(xcb, branch.window);
        }
        level.clear();
        for (Question &question : questions) {
            Window &top = *at(question.branch.top);
            top.isPanel |= !question.mark.numbers().empty();
            if (!question.tree)
                continue;
            const auto tree = xcbReply(xcb, *question.tree, xcb_query_tree_reply);
            if (!tree || top.isPanel)
                continue;
            const xcb_window_t *children = xcb_query_tree_children(tree.get());
            for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i)
                level.push_back({top.id, children[i]});
        }
    }
}

} // namespace vantrell
