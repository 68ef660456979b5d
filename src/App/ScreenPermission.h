// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/Ask.h"
#include "Platform/ScreenAccess.h"
#include "Support/Clock.h"
#include "Support/PlatformError.h"
#include "Support/Settings.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <expected>
#include <functional>
#include <stop_token>

namespace vantrell {

/// The way to the desktop's permission to record the screen: asks for it, shows where it is granted, looks
/// until it is, and starts the program anew, which is when a grant counts. One for a process. Main thread.
class ScreenPermission {
public:
    struct Options {
        /// Starts the program anew and ends this process; false when it does not start.
        std::function<bool()> relaunch;
        /// The smallest capture that there is; empty where none can be made.
        std::function<Task<std::expected<void, PlatformError>>(std::stop_token)> tryCapture;
    };

    /// What is given must outlive this object; `ask` is asked in the windows' order of coming.
    ScreenPermission(ScreenAccess &access, Settings &settings, Clock &clock, Ask ask, Options options);

    /// The launch's part when the permission is missing: explains once, then asks the desktop and watches.
    /// `needsMove`: a grant for where the program lies would be lost.
    Task<> primeScreenPermission(bool needsMove, std::stop_token stop);

    /// For the start of a capture. When it is false the desktop was asked and the user told; the new start
    /// after the grant brings them back.
    Task<bool> ensureScreenPermission(std::stop_token stop);

    /// The same wish from the menu, whatever is granted already.
    Task<> menuRequestPermission(std::stop_token stop);

    /// Makes one minimal capture, so that a desktop that lists programs by what they tried lists this one.
    void registerWithTCC();
    /// Looks once a second for five minutes, in place of an earlier watch; relaunches when it is granted.
    void startWatching(std::function<void()> onStillDenied);
    bool isWatching() const { return m_watch.active() > 0; }
    void openSettings() { m_access.openSettings(); }
    /// Once for a process.
    void relaunch();

private:
    Task<> tryToCapture(std::stop_token stop);
    Task<> watch(std::function<void()> onStillDenied, std::stop_token stop);

    ScreenAccess &m_access;
    Settings &m_settings;
    Clock &m_clock;
    const Ask m_ask;
    const Options m_options;
    bool m_hasRelaunched = false;
    TaskScope m_scope;
    TaskScope m_watch;
};

} // namespace vantrell
