// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11HotKeys.h"

#include "Platform/ScreenError.h"
#include "Platform/X11/XcbXkb.h"
#include "Support/Log.h"

#include <QPointer>
#include <QSocketNotifier>

#include <xcb/xinput.h>

#include <algorithm>
#include <string>
#include <utility>

namespace vantrell {

namespace {

constexpr int badAccess = 10;

const char *placeOf(HotKeyBackend::Key key) {
    switch (key) {
    case HotKeyBackend::Key::digit7:
        return "AE07";
    case HotKeyBackend::Key::digit8:
        return "AE08";
    case HotKeyBackend::Key::digit9:
        return "AE09";
    }
    return "";
}

std::string nameOf(HotKeyBackend::Key key) {
    return std::string("Super+Shift+") + char('6' + int(key));
}

PlatformError refusal(HotKeyBackend::Key key, int code) {
    if (code == badAccess)
        return {"x11", code, "Another program uses " + nameOf(key)};
    return {"x11", code, "The display server refused " + nameOf(key)};
}

} // namespace

std::expected<std::unique_ptr<X11HotKeys>, PlatformError> X11HotKeys::create() {
    auto connection = X11Connection::open();
    if (!connection)
        return std::unexpected(connection.error());
    std::unique_ptr<X11HotKeys> hotKeys(new X11HotKeys(std::move(*connection)));
    if (const auto listening = hotKeys->listen(); !listening)
        return std::unexpected(listening.error());
    return hotKeys;
}

X11HotKeys::X11HotKeys(std::unique_ptr<X11Connection> x11) : m_x11(std::move(x11)) {}

X11HotKeys::~X11HotKeys() {
    // It may be calling right now.
    if (QSocketNotifier *notifier = m_notifier.release()) {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
}

std::expected<void, PlatformError> X11HotKeys::listen() {
    xcb_connection_t *xcb = m_x11->xcb();
    constexpr const char *inputName = "XInputExtension";
    const auto input = m_x11->require(&xcb_input_id, inputName);
    if (!input)
        return std::unexpected(input.error());
    m_inputOpcode = (*input)->major_opcode;
    // Before 2.1 raw events do not come while somebody has the keyboard.
    const auto version =
        xcbReply(xcb, xcb_input_xi_query_version(xcb, 2, 2), xcb_input_xi_query_version_reply);
    if (!version || version->major_version < 2)
        return std::unexpected(
            screenError(ScreenErrorCode::missingExtension,
                        std::string("The display server lacks version 2 of the extension ") + inputName));
    const xcb_query_extension_reply_t *keyboard = xcb_get_extension_data(xcb, &xcb_xkb_id);
    if (keyboard && keyboard->present &&
        xcbReply(xcb, xcb_xkb_use_extension(xcb, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION),
                 xcb_xkb_use_extension_reply)) {
        m_keyboardEvent = keyboard->first_event;
        // Who speaks XKB is told of another map in its events only.
        constexpr std::uint16_t events =
            XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
        constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
        xcb_xkb_select_events(xcb, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts, nullptr);
    }
    m_keymap = X11Keymap::read(*m_x11);
    if (m_x11->isBroken())
        return std::unexpected(X11Connection::lostError());
    m_notifier = std::make_unique<QSocketNotifier>(m_x11->fd(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_eventLoop, [this] { drain(); });
    return {};
}

std::expected<void, PlatformError> X11HotKeys::grab(Key key, std::function<void()> pressed) {
    auto hotKey = std::make_unique<HotKey>(HotKey{key, std::move(pressed)});
    if (const auto taken = take(*hotKey); !taken)
        return taken;
    m_hotKeys.push_back(std::move(hotKey));
    // Events that came with the answers are in xcb's queue now, of which the socket tells nothing.
    QMetaObject::invokeMethod(&m_eventLoop, [this] { drain(); }, Qt::QueuedConnection);
    return {};
}

std::expected<void, PlatformError> X11HotKeys::take(HotKey &hotKey) {
    const xcb_keycode_t code = m_keymap.codeAt(placeOf(hotKey.key));
    if (code == 0)
        return std::unexpected(PlatformError{"x11", 0, "The keyboard has no key for " + nameOf(hotKey.key)});
    const auto combination = std::uint16_t(m_keymap.superMask() | XCB_MOD_MASK_SHIFT);
    std::vector<xcb_void_cookie_t> asked;
    for (const std::uint16_t locks : m_keymap.lockStates())
        asked.push_back(xcb_grab_key_checked(m_x11->xcb(), 0, m_x11->root(),
                                             std::uint16_t(combination | locks), code, XCB_GRAB_MODE_ASYNC,
                                             XCB_GRAB_MODE_ASYNC));
    hotKey.code = code;
    int refused = 0;
    for (const xcb_void_cookie_t cookie : asked) {
        if (const XcbPointer<xcb_generic_error_t> error{xcb_request_check(m_x11->xcb(), cookie)})
            refused = error->error_code;
    }
    if (m_x11->isBroken())
        return std::unexpected(X11Connection::lostError());
    if (refused == 0)
        return {};
    // All states of the locks or none: a key that works only sometimes is worse than one that does not.
    release(hotKey);
    return std::unexpected(refusal(hotKey.key, refused));
}

void X11HotKeys::release(HotKey &hotKey) {
    if (hotKey.code != 0)
        xcb_ungrab_key(m_x11->xcb(), hotKey.code, m_x11->root(), XCB_MOD_MASK_ANY);
    hotKey.code = 0;
    hotKey.isDown = false;
    xcb_flush(m_x11->xcb());
}

void X11HotKeys::takeAgain() {
    X11Keymap now = X11Keymap::read(*m_x11);
    if (m_x11->isBroken() || now == m_keymap)
        return;
    m_keymap = std::move(now);
    for (const auto &hotKey : m_hotKeys)
        release(*hotKey);
    for (const auto &hotKey : m_hotKeys) {
        if (const auto taken = take(*hotKey); !taken)
            qCWarning(logApp, "hot key lost with the new keyboard map: %s", taken.error().message.c_str());
    }
}

void X11HotKeys::drain() {
    // What a press starts may destroy this object.
    const QPointer<QObject> alive(&m_eventLoop);
    while (alive) {
        const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(m_x11->xcb())};
        if (event)
            handle(*event);
        else if (std::exchange(m_mayHaveNewKeymap, false))
            takeAgain();
        else
            break;
    }
    if (alive && m_x11->isBroken()) {
        // The socket of a server that has gone stays readable for ever.
        m_notifier->setEnabled(false);
        qCWarning(logApp, "hot keys end: %s", X11Connection::lostError().message.c_str());
    }
}

void X11HotKeys::handle(const xcb_generic_event_t &event) {
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    if (type == XCB_KEY_PRESS) {
        handlePress(reinterpret_cast<const xcb_key_press_event_t &>(event));
    } else if (type == XCB_MAPPING_NOTIFY || (m_keyboardEvent != 0 && type == m_keyboardEvent)) {
        m_mayHaveNewKeymap = true;
    } else if (type == XCB_GE_GENERIC) {
        const auto &raw = reinterpret_cast<const xcb_input_raw_key_release_event_t &>(event);
        if (raw.extension == m_inputOpcode && raw.event_type == XCB_INPUT_RAW_KEY_RELEASE)
            handleRelease(raw.detail);
    }
}

void X11HotKeys::handlePress(const xcb_key_press_event_t &event) {
    xcb_ungrab_keyboard(m_x11->xcb(), event.time);
    xcb_flush(m_x11->xcb());
    const auto found =
        std::ranges::find_if(m_hotKeys, [&](const auto &hotKey) { return hotKey->code == event.detail; });
    if (found == m_hotKeys.end() || std::exchange((*found)->isDown, true))
        return;
    watchReleases(true);
    // A copy: it may destroy this object.
    const auto pressed = (*found)->pressed;
    pressed();
}

void X11HotKeys::handleRelease(std::uint32_t code) {
    bool isAnyDown = false;
    for (const auto &hotKey : m_hotKeys) {
        if (hotKey->code == code)
            hotKey->isDown = false;
        isAnyDown |= hotKey->isDown;
    }
    if (!isAnyDown)
        watchReleases(false);
}

void X11HotKeys::watchReleases(bool watch) {
    if (m_isWatchingReleases == watch)
        return;
    m_isWatchingReleases = watch;
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, watch ? XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE : 0u};
    xcb_input_xi_select_events(m_x11->xcb(), m_x11->root(), 1, &selection.head);
    xcb_flush(m_x11->xcb());
    if (!watch)
        return;
    // What was let go before the selection makes no event.
    const auto keys = xcbReply(m_x11->xcb(), xcb_query_keymap(m_x11->xcb()), xcb_query_keymap_reply);
    if (!keys)
        return;
    for (const auto &hotKey : m_hotKeys) {
        if (hotKey->isDown && (keys->keys[hotKey->code / 8] & (1u << (hotKey->code % 8))) == 0)
            handleRelease(hotKey->code);
    }
}

} // namespace vantrell
