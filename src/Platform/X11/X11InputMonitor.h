// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/InputMonitor.h"
#include "Platform/X11/X11Connection.h"
#include "Support/Clock.h"
#include "Support/TaskScope.h"

#include <QObject>

#include <array>
#include <cstdint>
#include <memory>

class QSocketNotifier;

namespace vantrell {

/// The pointer of an X session, by XInput 2 raw events: they come whatever window has the pointer or a grab.
/// Buttons and motion are all that is ever asked for. Main thread; its connection sleeps in the event loop
/// and the server sends nothing of its own while the pointer rests.
///
/// A moving mouse may report a thousand times a second. After each `moved` the server is asked to keep
/// motion to itself for a frame's time, and the place is compared when that is over: a moving pointer costs
/// 60 wake-ups a second at most, while buttons come at once all the time.
///
/// A program that sets the pointer's place makes no raw motion. That is found when the pointer's shape
/// changes with it (XFIXES, where the server has it), before a button or motion is reported, and at the
/// latest by looking ten times a second.
class X11InputMonitor final : public InputMonitor {
public:
    /// The clock must outlive the monitor.
    explicit X11InputMonitor(Clock &clock);
    ~X11InputMonitor() override;

    std::expected<void, PlatformError> start(std::function<void(const PointerEvent &)> handler) override;
    void stop() override;
    std::optional<Point> pointerLocation() override;

private:
    std::expected<void, PlatformError> requireXInput();
    void selectEvents(bool motion);
    void readButtonMap();
    std::optional<Point> askPlace();
    void drain();
    void handle(const xcb_generic_event_t &event);
    void handleButton(std::uint32_t physicalButton, bool pressed, double hostTime);
    /// Reports `moved` when the pointer is not where it was when that was last reported.
    void compareWithLastPlace(double hostTime);
    Task<> watchMotionAgain(std::stop_token stop);
    Task<> lookForJumps(std::stop_token stop);
    void report(const PointerEvent &event) const;

    Clock &m_clock;
    std::unique_ptr<X11Connection> m_x11;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void(const PointerEvent &)> m_handler;
    std::uint8_t m_inputOpcode = 0;
    /// Zero without XFIXES.
    std::uint8_t m_firstFixesEvent = 0;
    /// What each physical button means; a left-handed user's are exchanged.
    std::array<std::uint8_t, 256> m_buttonMap{};
    std::optional<Point> m_lastPlace;
    bool m_watchingMotion = false;
    bool m_draining = false;
    QObject m_eventLoop;
    TaskScope m_scope;
};

} // namespace vantrell
