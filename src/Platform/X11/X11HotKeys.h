// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/HotKeyBackend.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11Keymap.h"

#include <QObject>

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <vector>

class QSocketNotifier;

namespace vantrell {

/// Key combinations of an X session, as passive grabs on a connection of its own that sleeps in the event
/// loop. Main thread. They go by the keys' places and are taken again when the keyboard map changes.
///
/// The grab of the keyboard that comes with a press is given back at once, so that whoever answers the key
/// can have the keyboard while it is still held down. That it is let go is heard from XInput 2, which is
/// asked for releases as long as one of our keys is down and never else.
class X11HotKeys final : public HotKeyBackend {
public:
    static std::expected<std::unique_ptr<X11HotKeys>, PlatformError> create();
    ~X11HotKeys() override;

    /// The error of a combination that another program holds has the domain "x11" and the code 10.
    std::expected<void, PlatformError> grab(Key key, std::function<void()> pressed) override;

private:
    struct HotKey {
        Key key;
        std::function<void()> pressed;
        /// Zero while it cannot be had.
        xcb_keycode_t code = 0;
        bool isDown = false;
    };

    explicit X11HotKeys(std::unique_ptr<X11Connection> x11);
    std::expected<void, PlatformError> listen();
    std::expected<void, PlatformError> take(HotKey &hotKey);
    void release(HotKey &hotKey);
    void takeAgain();
    void drain();
    void handle(const xcb_generic_event_t &event);
    void handlePress(const xcb_key_press_event_t &event);
    void handleRelease(std::uint32_t code);
    void watchReleases(bool watch);

    std::unique_ptr<X11Connection> m_x11;
    X11Keymap m_keymap;
    std::vector<std::unique_ptr<HotKey>> m_hotKeys;
    std::uint8_t m_inputOpcode = 0;
    /// Zero without XKB.
    std::uint8_t m_keyboardEvent = 0;
    bool m_mayHaveNewKeymap = false;
    bool m_isWatchingReleases = false;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QObject m_eventLoop;
};

} // namespace vantrell
