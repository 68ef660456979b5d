// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Wayland/PortalGround.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A Wayland desktop of a test's own without a graphics card: sway with one or more headless outputs, and its
/// screen cast and screenshot portals, which ask nobody. WAYLAND_DISPLAY of this process names it.
class SwaySession {
public:
    struct Options {
        int width = 1280;
        int height = 720;
        /// Side by side; the portal shares the first.
        int outputs = 1;
        double scale = 1;
        /// The portal's part for sway notes what it sends.
        bool notesPictures = false;
        /// The user is asked, and takes so long to choose.
        std::optional<int> choiceSeconds;
        /// The program that the portal's part for sway takes stills with is not installed.
        bool failsAtStills = false;
    };

    explicit SwaySession(const Options &options);
    SwaySession() : SwaySession(Options()) {}
    ~SwaySession();
    SwaySession(const SwaySession &) = delete;
    SwaySession &operator=(const SwaySession &) = delete;

    PortalGround &ground() { return m_ground; }
    const SessionBus &bus() const { return m_ground.bus(); }
    ChildProcess::Environment environment() const;

    /// Tells sway; its exit code.
    int tell(const std::string &command) const;

    /// Numbers in frame code, full screen, so many a second; on the screen when this returns.
    void showNumbers(double rate);
    void hideNumbers();

    /// When the pictures that were sent were made, as the compositor stamped them, in host seconds. Only if
    /// they are noted.
    std::vector<double> sentPictures() const;

    /// Processor time that compositor and portal have used so far.
    double desktopCpuSeconds() const;

    /// As crashes do.
    void killCompositor();
    void killBackend();
    /// It answers no more.
    void freezeBackend();

private:
    void startSway();
    void startBackend();

    const Options m_options;
    PortalGround m_ground;
    std::optional<ScopedEnvironment> m_display;
    std::string m_socket, m_control;
    std::unique_ptr<ChildProcess> m_sway;
    std::unique_ptr<ChildProcess> m_backend;
    std::unique_ptr<ChildProcess> m_numbers;
};

} // namespace vantrell::testing
