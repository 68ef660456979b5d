// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Notifier.h"
#include "Support/Clock.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <functional>
#include <stop_token>

namespace vantrell {

/// Tells the user that the desktop lets a start wait: its question may lie below other windows, and a portal
/// that has lost its PipeWire never answers. Main thread.
class WaitingNote {
public:
    /// Both outlive it; `cancel` is what the user may do about it.
    WaitingNote(Notifier &notifier, Clock &clock, std::function<void()> cancel);

    /// Takes the notification back.
    ~WaitingNote() { follow(false); }
    WaitingNote(const WaitingNote &) = delete;
    WaitingNote &operator=(const WaitingNote &) = delete;

    /// Shown when it has been so for a while, and withdrawn when it is over.
    void follow(bool isWaiting);

private:
    Task<> tell(std::stop_token stop);

    Notifier &m_notifier;
    Clock &m_clock;
    const std::function<void()> m_cancel;
    Notifier::Id m_shown = 0;
    TaskScope m_scope;
};

} // namespace vantrell
