// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Desktop/X11Application.h"

#include "TestSupport/RunTask.h"

#include <QSocketNotifier>
#include <QTimer>

#include <cstdlib>
#include <stdexcept>

#include <xcb/xfixes.h>

namespace vantrell::testing {

namespace {

constexpr std::uint8_t alphaDepth = 32;

xcb_visualid_t alphaVisual(const xcb_screen_t &screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth == alphaDepth)
            return xcb_depth_visuals(depths.data)->visual_id;
    }
    throw std::runtime_error("no visual with alpha");
}

} // namespace

X11Application::X11Application(const Options &options)
    : m_connection(xcb_connect(nullptr, nullptr)), m_colour(options.colour), m_slowness(options.slowness) {
    if (xcb_connection_has_error(m_connection))
        throw std::runtime_error("no X server for the application");
    const xcb_screen_t &screen = *xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_root = screen.root;
    const xcb_visualid_t visual = options.hasAlpha ? alphaVisual(screen) : screen.root_visual;
    const xcb_colormap_t colours = xcb_generate_id(m_connection);
    xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, colours, m_root, visual);
    m_window = xcb_generate_id(m_connection);
    const std::uint32_t values[] = {0, options.overridesRedirect,
                                    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS, colours};
    const PixelRect &at = options.pixels;
    xcb_create_window(
        m_connection, options.hasAlpha ? alphaDepth : screen.root_depth, m_window, m_root, std::int16_t(at.x),
        std::int16_t(at.y), std::uint16_t(at.width), std::uint16_t(at.height),
        std::uint16_t(options.borderWidth), XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
        XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values);
    m_context = xcb_generate_id(m_connection);
    xcb_create_gc(m_connection, m_context, m_window, 0, nullptr);
    setText("WM_NAME", "STRING", options.title);
    setText("WM_CLASS", "STRING", options.instance + '\0' + options.windowClass + '\0');
    // A position of the user's own keeps window managers from placing the window where they like.
    constexpr std::uint32_t userPosition = 1, staticGravity = 10, gravity = 1 << 9;
    std::vector<std::uint32_t> hints(18);
    hints[0] = userPosition | gravity;
    hints[17] = staticGravity;
    setNumbers("WM_NORMAL_HINTS", "WM_SIZE_HINTS", hints);
    if (options.isPanel)
        setNumbers("_VANTRELL_PANEL", "CARDINAL", {1});
    xcb_map_window(m_connection, m_window);
    sync();
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { handleEvents(); });
    handleEvents();
    if (!eventually([this] { return m_repaints > 0; }))
        throw std::runtime_error("the application's window did not appear");
}

X11Application::~X11Application() {
    m_notifier.reset();
    xcb_disconnect(m_connection);
}

void X11Application::handleEvents() {
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
        const std::uint8_t type = event->response_type & 0x7f;
        if (type == XCB_EXPOSE && m_slowness.count() > 0) {
            QTimer::singleShot(m_slowness, m_notifier.get(), [this] { paint(); });
        } else if (type == XCB_EXPOSE) {
            paint();
        } else if (type == XCB_BUTTON_PRESS) {
            const auto &press = *reinterpret_cast<xcb_button_press_event_t *>(event);
            constexpr int side = 2 * markReach + 1;
            m_drawn.push_back({press.event_x - markReach, press.event_y - markReach, side, side});
            m_marks.push_back({double(press.root_x), double(press.root_y)});
            fill(m_drawn.back(), markColour);
        }
        std::free(event);
    }
    xcb_flush(m_connection);
}

void X11Application::paint() {
    fill({0, 0, 4096, 4096}, m_colour);
    for (const PixelRect &mark : m_drawn)
        fill(mark, markColour);
    xcb_flush(m_connection);
    ++m_repaints;
}

void X11Application::fill(const PixelRect &rect, std::uint32_t colour) {
    xcb_change_gc(m_connection, m_context, XCB_GC_FOREGROUND, &colour);
    const xcb_rectangle_t area{std::int16_t(rect.x), std::int16_t(rect.y), std::uint16_t(rect.width),
                               std::uint16_t(rect.height)};
    xcb_poly_fill_rectangle(m_connection, m_window, m_context, 1, &area);
    xcb_flush(m_connection);
}

xcb_atom_t X11Application::atom(const std::string &name) {
    const auto cookie = xcb_intern_atom(m_connection, 0, std::uint16_t(name.size()), name.data());
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(m_connection, cookie, nullptr);
    const xcb_atom_t value = reply->atom;
    std::free(reply);
    return value;
}

void X11Application::setText(const std::string &property, const std::string &type, const std::string &value) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, atom(property), atom(type), 8,
                        std::uint32_t(value.size()), value.data());
    sync();
}

void X11Application::setNumbers(const std::string &property, const std::string &type,
                                const std::vector<std::uint32_t> &values) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, atom(property), atom(type), 32,
                        std::uint32_t(values.size()), values.data());
    sync();
}

void X11Application::moveResize(const PixelRect &pixels) {
    const std::uint32_t values[] = {std::uint32_t(pixels.x), std::uint32_t(pixels.y),
                                    std::uint32_t(pixels.width), std::uint32_t(pixels.height)};
    xcb_configure_window(m_connection, m_window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    sync();
}

void X11Application::stack(std::uint32_t mode) {
    xcb_configure_window(m_connection, m_window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
    sync();
}

void X11Application::raise() {
    stack(XCB_STACK_MODE_ABOVE);
}

void X11Application::lower() {
    stack(XCB_STACK_MODE_BELOW);
}

void X11Application::map() {
    xcb_map_window(m_connection, m_window);
    sync();
}

void X11Application::unmap() {
    xcb_unmap_window(m_connection, m_window);
    sync();
}

void X11Application::cutShape(const PixelRect &part) {
    std::free(
        xcb_xfixes_query_version_reply(m_connection, xcb_xfixes_query_version(m_connection, 5, 0), nullptr));
    const xcb_rectangle_t area{std::int16_t(part.x), std::int16_t(part.y), std::uint16_t(part.width),
                               std::uint16_t(part.height)};
    const xcb_xfixes_region_t region = xcb_generate_id(m_connection);
    xcb_xfixes_create_region(m_connection, region, 1, &area);
    xcb_xfixes_set_window_shape_region(m_connection, m_window, XCB_SHAPE_SK_BOUNDING, 0, 0, region);
    sync();
}

void X11Application::close() {
    xcb_destroy_window(m_connection, m_window);
    sync();
}

void X11Application::sync() {
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    // What came with the answer is in xcb's queue now, of which the socket tells nothing.
    if (m_notifier)
        handleEvents();
}

} // namespace vantrell::testing
