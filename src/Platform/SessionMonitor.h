// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <functional>

namespace vantrell {

/// Port: the computer's sleep and the user's session. Main thread. A desktop without anybody who tells is
/// silent.
class SessionMonitor {
public:
    enum class Event {
        /// The computer is about to sleep, or to shut down; it waits a few seconds for `release`.
        willSleep = 1,
        willShutDown,
        didWake,
        /// Another user's session came to the front, or this one came back.
        sessionResigned,
        sessionBecameActive,
    };

    virtual ~SessionMonitor() = default;

    virtual void start(std::function<void(Event)> handler) = 0;

    /// While it is held the computer's sleep waits (logind: five seconds at most) until it is let go. Taken
    /// and given back as often as one likes.
    virtual void holdSleepBack(bool hold) = 0;

    /// While it is set the screen is not blanked and the computer does not fall asleep for idleness; locking
    /// and closing the lid work as ever.
    virtual void keepAwake(bool awake) = 0;
};

} // namespace vantrell
