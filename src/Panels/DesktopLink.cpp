// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/DesktopLink.h"

#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

/// Windows are restacked several at a time.
constexpr auto lookDelay = 60ms;

/// Caps lock and num lock do not make another key of it.
constexpr std::array<std::uint16_t, 4> lockStates{0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                                  XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};

template <typename T>
struct Freed {
    void operator()(T *memory) const { std::free(memory); }
};

template <typename Cookie, typename Reply>
std::unique_ptr<Reply, Freed<Reply>> answer(xcb_connection_t *connection, Cookie cookie,
                                            Reply *(*take)(xcb_connection_t *, Cookie,
                                                           xcb_generic_error_t **)) {
    xcb_generic_error_t *error = nullptr;
    std::unique_ptr<Reply, Freed<Reply>> reply(take(connection, cookie, &error));
    std::free(error);
    return reply;
}

xcb_atom_t atomNamed(xcb_connection_t *connection, std::string_view name) {
    const auto reply =
        answer(connection, xcb_intern_atom(connection, 0, std::uint16_t(name.size()), name.data()),
               xcb_intern_atom_reply);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

xcb_xfixes_region_t makeRegion(xcb_connection_t *connection, const QRegion &region) {
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect &rect : region) {
        rectangles.push_back({std::int16_t(rect.x()), std::int16_t(rect.y()), std::uint16_t(rect.width()),
                              std::uint16_t(rect.height())});
    }
    const xcb_xfixes_region_t made = xcb_generate_id(connection);
    xcb_xfixes_create_region(connection, made, std::uint32_t(rectangles.size()), rectangles.data());
    return made;
}

QRect geometryOf(xcb_connection_t *connection, xcb_window_t window) {
    const auto reply = answer(connection, xcb_get_geometry(connection, window), xcb_get_geometry_reply);
    return reply ? QRect(reply->x, reply->y, reply->width, reply->height) : QRect();
}

} // namespace

struct DesktopLink::Watch {
    WindowId window;
    std::function<void()> covered;
    ~Watch() {
        DesktopLink &link = instance();
        std::erase_if(link.m_watches, [](const auto &watch) { return watch.expired(); });
        link.selectStackingEvents();
    }
};

struct DesktopLink::KeyGrab {
    /// The codes that produce each symbol.
    std::vector<std::pair<xcb_keycode_t, std::uint32_t>> keys;
    std::function<void(std::uint32_t)> pressed;
    ~KeyGrab() {
        const DesktopLink &link = instance();
        for (const auto &[code, symbol] : keys) {
            for (const std::uint16_t locks : lockStates)
                xcb_ungrab_key(link.m_connection, code, link.m_root, locks);
        }
        if (link.m_connection)
            xcb_flush(link.m_connection);
    }
};

struct DesktopLink::PaintWatch {
    QRect area;
    std::function<void()> painted;
    xcb_damage_damage_t damage;
    ~PaintWatch() {
        const DesktopLink &link = instance();
        if (damage == XCB_NONE)
            return;
        xcb_damage_destroy(link.m_connection, damage);
        xcb_flush(link.m_connection);
    }
};

xcb_connection_t *DesktopLink::serverOfQt() {
    // Qt's offscreen platform says that it is X11, and has none.
    const auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

DesktopLink &DesktopLink::instance() {
    // Never taken down: panels that live as long as the process may still end their watches.
    static DesktopLink *const link = new DesktopLink;
    return *link;
}

DesktopLink::DesktopLink() {
    if (!serverOfQt()) {
        // Wayland's compositors blend always.
        m_isComposited = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
        return;
    }
    // A connection of its own: Qt keeps a mask of the root's events that must not be replaced.
    m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_connection)) {
        xcb_disconnect(std::exchange(m_connection, nullptr));
        return;
    }
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_compositorSelection = atomNamed(m_connection, "_NET_WM_CM_S0");
    m_windowState = atomNamed(m_connection, "WM_STATE");
    m_ownMark = atomNamed(m_connection, "_VANTRELL_PANEL");
    const xcb_query_extension_reply_t *fixes = xcb_get_extension_data(m_connection, &xcb_xfixes_id);
    if (fixes && fixes->present) {
        m_firstFixesEvent = fixes->first_event;
        for (xcb_connection_t *connection : {m_connection, serverOfQt()})
            xcb_discard_reply(connection, xcb_xfixes_query_version(connection, 4, 0).sequence);
        xcb_xfixes_select_selection_input(m_connection, m_root, m_compositorSelection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    updateCompositing();
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { readEvents(); });
    // Answers that were waited for may have brought events along.
    QTimer::singleShot(0, m_notifier.get(), [this] { readEvents(); });
}

DesktopLink::~DesktopLink() {
    if (m_connection)
        xcb_disconnect(m_connection);
}

void DesktopLink::markAsOwn(WindowId window) {
    if (!m_connection)
        return;
    const std::uint32_t yes = 1;
    xcb_change_property(serverOfQt(), XCB_PROP_MODE_REPLACE, window, m_ownMark, XCB_ATOM_CARDINAL, 32, 1,
                        &yes);
}

void DesktopLink::setShape(WindowId window, const QRegion &visible, const QRegion &touchable) {
    if (!m_connection || m_firstFixesEvent == 0)
        return;
    xcb_connection_t *connection = serverOfQt();
    for (const auto &[kind, region] :
         {std::pair(XCB_SHAPE_SK_BOUNDING, &visible), std::pair(XCB_SHAPE_SK_INPUT, &touchable)}) {
        const xcb_xfixes_region_t made = region->isEmpty() ? XCB_NONE : makeRegion(connection, *region);
        xcb_xfixes_set_window_shape_region(connection, window, kind, 0, 0, made);
        if (made != XCB_NONE)
            xcb_xfixes_destroy_region(connection, made);
    }
}

Observation DesktopLink::watchForCover(WindowId window, std::function<void()> covered) {
    const auto watch = std::make_shared<Watch>(window, std::move(covered));
    m_watches.emplace_back(watch);
    selectStackingEvents();
    return watch;
}

Observation DesktopLink::grabKeys(std::vector<std::uint32_t> keySymbols,
                                  std::function<void(std::uint32_t)> pressed) {
    const auto grab = std::make_shared<KeyGrab>();
    grab->pressed = std::move(pressed);
    if (!m_connection)
        return grab;
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    const auto map =
        answer(m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, std::uint8_t(count)),
               xcb_get_keyboard_mapping_reply);
    if (!map)
        return grab;
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(map.get());
    for (int at = 0; at < count; ++at) {
        const xcb_keysym_t symbol = symbols[at * map->keysyms_per_keycode];
        if (std::ranges::find(keySymbols, symbol) == keySymbols.end())
            continue;
        const auto code = xcb_keycode_t(setup->min_keycode + at);
        grab->keys.emplace_back(code, symbol);
        for (const std::uint16_t locks : lockStates) {
            xcb_grab_key(m_connection, 0, m_root, locks, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        }
    }
    xcb_flush(m_connection);
    m_keyGrabs.emplace_back(grab);
    return grab;
}

Observation DesktopLink::watchForPainting(QRect area, std::function<void()> painted) {
    const auto watch = std::make_shared<PaintWatch>(area, std::move(painted), xcb_damage_damage_t(XCB_NONE));
    if (m_connection && m_firstDamageEvent != 0) {
        watch->damage = xcb_generate_id(m_connection);
        xcb_damage_create(m_connection, watch->damage, m_root, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(m_connection);
        m_paintWatches.emplace_back(watch);
    }
    return watch;
}

DesktopLink::WindowId DesktopLink::focusedWindow() const {
    if (!m_connection)
        return 0;
    const auto reply = answer(m_connection, xcb_get_input_focus(m_connection), xcb_get_input_focus_reply);
    return reply ? reply->focus : 0;
}

void DesktopLink::focus(WindowId window) {
    if (!m_connection || window == XCB_NONE)
        return;
    const auto attributes = answer(serverOfQt(), xcb_get_window_attributes(serverOfQt(), window),
                                   xcb_get_window_attributes_reply);
    const bool isThere = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    xcb_set_input_focus(serverOfQt(), XCB_INPUT_FOCUS_PARENT,
                        isThere ? window : xcb_window_t(XCB_INPUT_FOCUS_POINTER_ROOT), XCB_CURRENT_TIME);
    xcb_flush(serverOfQt());
}

void DesktopLink::sync() {
    if (!m_connection)
        return;
    answer(serverOfQt(), xcb_get_input_focus(serverOfQt()), xcb_get_input_focus_reply);
}

void DesktopLink::readEvents() {
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
        const int type = event->response_type & 0x7f;
        if (m_firstFixesEvent != 0 && type == m_firstFixesEvent + XCB_XFIXES_SELECTION_NOTIFY)
            updateCompositing();
        else if (m_firstDamageEvent != 0 && type == m_firstDamageEvent + XCB_DAMAGE_NOTIFY) {
            const xcb_rectangle_t area = reinterpret_cast<xcb_damage_notify_event_t *>(event)->area;
            tellPainted({area.x, area.y, area.width, area.height});
        } else if (type == XCB_KEY_PRESS)
            tellKey(reinterpret_cast<xcb_key_press_event_t *>(event)->detail);
        else if ((type == XCB_CONFIGURE_NOTIFY || type == XCB_MAP_NOTIFY) && !m_looksSoon) {
            m_looksSoon = true;
            QTimer::singleShot(lookDelay, m_notifier.get(), [this] {
                m_looksSoon = false;
                lookForCovers();
            });
        }
        std::free(event);
    }
    if (xcb_connection_has_error(m_connection))
        m_notifier->setEnabled(false);
}

void DesktopLink::updateCompositing() {
    const auto owner = answer(m_connection, xcb_get_selection_owner(m_connection, m_compositorSelection),
                              xcb_get_selection_owner_reply);
    const bool isComposited = owner && owner->owner != XCB_NONE;
    if (std::exchange(m_isComposited, isComposited) != isComposited)
        m_compositing.notify();
}

void DesktopLink::selectStackingEvents() {
    if (!m_connection)
        return;
    const std::uint32_t mask =
        m_watches.empty() ? XCB_EVENT_MASK_NO_EVENT : XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_connection);
}

void DesktopLink::lookForCovers() {
    const auto watches = m_watches;
    for (const auto &weak : watches) {
        const auto watch = weak.lock();
        if (watch && isCovered(watch->window))
            watch->covered();
    }
}

void DesktopLink::tellKey(std::uint8_t code) {
    std::erase_if(m_keyGrabs, [](const auto &grab) { return grab.expired(); });
    for (const auto &weak : std::vector(m_keyGrabs)) {
        const auto grab = weak.lock();
        if (!grab)
            continue;
        const auto key = std::ranges::find(grab->keys, code, &std::pair<xcb_keycode_t, std::uint32_t>::first);
        if (key != grab->keys.end())
            grab->pressed(key->second);
    }
}

void DesktopLink::tellPainted(const QRect &area) {
    std::erase_if(m_paintWatches, [](const auto &watch) { return watch.expired(); });
    for (const auto &weak : std::vector(m_paintWatches)) {
        const auto watch = weak.lock();
        if (watch && watch->area.intersects(area))
            watch->painted();
    }
}

bool DesktopLink::isCovered(WindowId window) const {
    const QRect own = geometryOf(m_connection, window);
    const auto tree = answer(m_connection, xcb_query_tree(m_connection, m_root), xcb_query_tree_reply);
    if (!tree || own.isEmpty())
        return false;
    // From the bottom to the top.
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    for (int at = xcb_query_tree_children_length(tree.get()) - 1; at >= 0 && children[at] != window; --at) {
        const auto attributes = answer(m_connection, xcb_get_window_attributes(m_connection, children[at]),
                                       xcb_get_window_attributes_reply);
        if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
            geometryOf(m_connection, children[at]).intersects(own) && isManaged(children[at]))
            return true;
    }
    return false;
}

bool DesktopLink::isManaged(WindowId window) const {
    if (hasState(window))
        return true;
    // In a frame of the window manager's, one or two windows deep.
    const auto tree = answer(m_connection, xcb_query_tree(m_connection, window), xcb_query_tree_reply);
    if (!tree)
        return false;
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    return std::any_of(children, children + xcb_query_tree_children_length(tree.get()),
                       [this](xcb_window_t child) { return hasState(child); });
}

bool DesktopLink::hasState(WindowId window) const {
    const auto reply =
        answer(m_connection,
               xcb_get_property(m_connection, 0, window, m_windowState, XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
               xcb_get_property_reply);
    return reply && reply->type != XCB_NONE;
}

} // namespace vantrell
