// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/StillCapture.h"
#include "Support/Clock.h"
#include "Support/Observers.h"
#include "Support/TaskScope.h"

#include <QImage>

#include <functional>
#include <stop_token>

namespace vantrell {

class FloatingPanel;

/// Tells whether the screen behind a panel is light: looks at strips right above and below it while
/// the panel is shown, twice a second at most, less often where nothing changes. Where the screen cannot be
/// looked at, it is as light as the desktop's colours. Main thread.
class BackdropMonitor {
public:
    /// All outlive the monitor. `changed` may hide the panel, but not destroy the monitor.
    BackdropMonitor(FloatingPanel &panel, StillCapture &stills, Clock &clock,
                    std::function<void(bool isLight)> changed);
    BackdropMonitor(const BackdropMonitor &) = delete;
    BackdropMonitor &operator=(const BackdropMonitor &) = delete;

    /// Looks at once, and from then on; again after the panel was moved.
    void start();
    void stop();

private:
    void followColours();
    Task<> watch(std::stop_token stop);

    FloatingPanel &m_panel;
    StillCapture &m_stills;
    Clock &m_clock;
    const std::function<void(bool)> m_changed;
    bool m_isLight = false;
    Observation m_colours;
    TaskScope m_scope;
};

/// How light the picture is as seen, 0...1.
double lightness(const QImage &picture);

} // namespace vantrell
