// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/AppDelegate.h"
#include "App/BusObject.h"
#include "App/CrashNotice.h"
#include "App/PanelInterface.h"
#include "App/SingleInstance.h"
#include "Platform/DesktopServices.h"
#include "Platform/Platform.h"
#include "Support/Clock.h"
#include "Support/OneShot.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// The application as a process: finds out whether it may run, opens what it needs, and ends when nothing can
/// be lost any more. Needs a QApplication. Main thread.
class Application {
public:
    /// `environmentKey` is the key that the environment held and was wiped of. The clock outlives it.
    Application(std::optional<std::string> environmentKey, Clock &clock);
    ~Application();
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    /// The process's exit code.
    Task<int> run(std::stop_token stop);

    /// Ends the run; a recording is saved first. Again: the same.
    void terminate();

private:
    Task<> openUploads(std::stop_token stop);

    const std::optional<std::string> m_environmentKey;
    Clock &m_clock;
    OneShot<bool> m_ended;
    bool m_isAskedToEnd = false;
    std::unique_ptr<BusObject> m_bus;
    std::unique_ptr<SingleInstance> m_instance;
    std::unique_ptr<CaptureSettings> m_settings;
    DesktopServices m_desktop;
    Platform m_platform;
    std::unique_ptr<ServiceSession> m_session;
    std::unique_ptr<UploadRun> m_uploads;
    std::unique_ptr<PanelInterface> m_ui;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<CrashNotice> m_crashNotice;
    TaskScope m_scope;
};

} // namespace vantrell
