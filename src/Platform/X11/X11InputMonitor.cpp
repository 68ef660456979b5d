// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11InputMonitor.h"

#include "Platform/ScreenError.h"
#include "Support/Log.h"

#include <QSocketNotifier>

#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace vantrell {

namespace {

/// One frame at 60 a second.
constexpr auto motionRest = std::chrono::milliseconds(16);
/// How soon a pointer that makes no motion is found elsewhere.
constexpr auto jumpLookInterval = std::chrono::milliseconds(100);

/// Devices that scroll smoothly report it as motion of an axis beyond the pointer's two; each notch of theirs
/// comes as a button besides.
bool movesPointer(const xcb_input_raw_motion_event_t &event) {
    constexpr std::uint32_t pointerAxes = 0b11;
    return event.valuators_len > 0 && (*xcb_input_raw_button_press_valuator_mask(&event) & pointerAxes) != 0;
}

/// The four buttons that stand for a notch up, down, left and right.
std::optional<Point> scrollOf(std::uint8_t button) {
    switch (button) {
    case 4:
        return Point{0, 1};
    case 5:
        return Point{0, -1};
    case 6:
        return Point{1, 0};
    case 7:
        return Point{-1, 0};
    default:
        return std::nullopt;
    }
}

} // namespace

X11InputMonitor::X11InputMonitor(Clock &clock) : m_clock(clock) {}

X11InputMonitor::~X11InputMonitor() {
    stop();
}

std::expected<void, PlatformError> X11InputMonitor::start(std::function<void(const PointerEvent &)> handler) {
    stop();
    auto connection = X11Connection::open();
    if (!connection)
        return std::unexpected(connection.error());
    m_x11 = std::move(*connection);
    if (auto supported = requireXInput(); !supported) {
        m_x11.reset();
        return supported;
    }
    xcb_connection_t *xcb = m_x11->xcb();
    m_firstFixesEvent = 0;
    if (const auto fixes = m_x11->requireXFixes()) {
        m_firstFixesEvent = (*fixes)->first_event;
        xcb_xfixes_select_cursor_input(xcb, m_x11->root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    }
    selectEvents(true);
    readButtonMap();
    m_lastPlace = askPlace();
    if (m_x11->isBroken()) {
        m_x11.reset();
        return std::unexpected(X11Connection::lostError());
    }
    m_handler = std::move(handler);
    m_notifier = std::make_unique<QSocketNotifier>(m_x11->fd(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_eventLoop, [this] { drain(); });
    m_scope.start(this, &X11InputMonitor::lookForJumps);
    return {};
}

void X11InputMonitor::stop() {
    m_scope.cancel();
    // It may be calling right now.
    if (QSocketNotifier *notifier = m_notifier.release()) {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
    m_handler = nullptr;
    m_x11.reset();
}

std::optional<Point> X11InputMonitor::pointerLocation() {
    if (!m_x11)
        return std::nullopt;
    const auto place = askPlace();
    // Events that came with the answer are in xcb's queue now, of which the socket tells nothing.
    if (!m_draining)
        QMetaObject::invokeMethod(&m_eventLoop, [this] { drain(); }, Qt::QueuedConnection);
    return place;
}

std::expected<void, PlatformError> X11InputMonitor::requireXInput() {
    constexpr const char *name = "XInputExtension";
    const auto extension = m_x11->require(&xcb_input_id, name);
    if (!extension)
        return std::unexpected(extension.error());
    m_inputOpcode = (*extension)->major_opcode;
    // From 2.1 on raw events come during grabs too.
    const auto version = xcbReply(m_x11->xcb(), xcb_input_xi_query_version(m_x11->xcb(), 2, 2),
                                  xcb_input_xi_query_version_reply);
    if (!version || version->major_version < 2)
        return std::unexpected(
            screenError(ScreenErrorCode::missingExtension,
                        std::string("The display server lacks version 2 of the extension ") + name));
    return {};
}

void X11InputMonitor::selectEvents(bool motion) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    if (motion)
        selection.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
    xcb_input_xi_select_events(m_x11->xcb(), m_x11->root(), 1, &selection.head);
    xcb_flush(m_x11->xcb());
    m_watchingMotion = motion;
}

void X11InputMonitor::readButtonMap() {
    std::iota(m_buttonMap.begin(), m_buttonMap.end(), std::uint8_t(0));
    const auto mapping =
        xcbReply(m_x11->xcb(), xcb_get_pointer_mapping(m_x11->xcb()), xcb_get_pointer_mapping_reply);
    if (!mapping)
        return;
    // The first entry is that of button 1.
    const auto *meanings = xcb_get_pointer_mapping_map(mapping.get());
    std::copy_n(meanings, std::min(xcb_get_pointer_mapping_map_length(mapping.get()), 255),
                m_buttonMap.begin() + 1);
}

std::optional<Point> X11InputMonitor::askPlace() {
    const auto place =
        xcbReply(m_x11->xcb(), xcb_query_pointer(m_x11->xcb(), m_x11->root()), xcb_query_pointer_reply);
    if (!place || !place->same_screen)
        return std::nullopt;
    return Point{double(place->root_x), double(place->root_y)};
}

void X11InputMonitor::drain() {
    if (std::exchange(m_draining, true))
        return;
    while (m_x11) {
        const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(m_x11->xcb())};
        if (!event)
            break;
        handle(*event);
    }
    m_draining = false;
    if (m_x11 && m_x11->isBroken()) {
        // The socket of a server that has gone stays readable for ever.
        stop();
        qCWarning(logCapture, "input events end: %s", X11Connection::lostError().message.c_str());
    }
}

void X11InputMonitor::handle(const xcb_generic_event_t &event) {
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    const double now = m_clock.hostNow();
    if (type == XCB_MAPPING_NOTIFY) {
        if (reinterpret_cast<const xcb_mapping_notify_event_t &>(event).request == XCB_MAPPING_POINTER)
            readButtonMap();
    } else if (m_firstFixesEvent != 0 && type == m_firstFixesEvent + XCB_XFIXES_CURSOR_NOTIFY) {
        if (m_watchingMotion)
            compareWithLastPlace(now);
    } else if (type == XCB_GE_GENERIC) {
        const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
        if (generic.extension != m_inputOpcode)
            return;
        const auto &raw = reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event);
        const double hostTime = X11Connection::hostTime(raw.time, now);
        if (raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS || raw.event_type == XCB_INPUT_RAW_BUTTON_RELEASE)
            handleButton(raw.detail, raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS, hostTime);
        else if (raw.event_type == XCB_INPUT_RAW_MOTION && m_watchingMotion && movesPointer(raw))
            compareWithLastPlace(hostTime);
    }
}

void X11InputMonitor::handleButton(std::uint32_t physicalButton, bool pressed, double hostTime) {
    const std::uint8_t button = m_buttonMap[physicalButton & 0xff];
    if (button == 1 || button == 3) {
        using enum PointerEvent::Kind;
        compareWithLastPlace(hostTime);
        const bool isLeft = button == 1;
        report({.kind = pressed ? (isLeft ? leftDown : rightDown) : (isLeft ? leftUp : rightUp),
                .hostTime = hostTime});
    } else if (const auto scroll = scrollOf(button); scroll && pressed) {
        compareWithLastPlace(hostTime);
        report({.kind = PointerEvent::Kind::scroll,
                .hostTime = hostTime,
                .deltaX = scroll->x,
                .deltaY = scroll->y});
    }
}

void X11InputMonitor::compareWithLastPlace(double hostTime) {
    const auto place = m_x11 ? askPlace() : std::nullopt;
    if (!place || place == m_lastPlace)
        return;
    m_lastPlace = place;
    if (m_watchingMotion) {
        selectEvents(false);
        m_scope.start(this, &X11InputMonitor::watchMotionAgain);
    }
    report({.kind = PointerEvent::Kind::moved, .hostTime = hostTime});
}

Task<> X11InputMonitor::watchMotionAgain(std::stop_token stop) {
    if (!co_await m_clock.sleep(motionRest, stop))
        co_return;
    // In this order: motion after the selection makes an event, motion before it shows in the comparison.
    selectEvents(true);
    compareWithLastPlace(m_clock.hostNow());
    drain();
}

Task<> X11InputMonitor::lookForJumps(std::stop_token stop) {
    while (co_await m_clock.sleep(jumpLookInterval, stop)) {
        // Else the place is about to be compared anyway.
        if (m_watchingMotion)
            compareWithLastPlace(m_clock.hostNow());
        drain();
    }
}

void X11InputMonitor::report(const PointerEvent &event) const {
    // A copy: the handler may stop the monitor.
    if (const auto handler = m_handler)
        handler(event);
}

} // namespace vantrell
