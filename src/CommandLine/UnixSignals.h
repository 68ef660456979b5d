// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <functional>
#include <initializer_list>
#include <memory>

class QSocketNotifier;

namespace vantrell {

/// Delivers Unix signals in the main thread's event loop. Create it before other threads are started: they
/// inherit the blocked signals, which then arrive here only. Main thread, one at a time.
class UnixSignals {
public:
    /// Threads that are started from now on do not get these signals. For a program in which threads are
    /// started before it can have this object.
    static void block(std::initializer_list<int> signals);

    UnixSignals(std::initializer_list<int> signals, std::function<void(int)> handler);
    ~UnixSignals();
    UnixSignals(const UnixSignals &) = delete;
    UnixSignals &operator=(const UnixSignals &) = delete;

private:
    UniqueFd m_fd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vantrell
