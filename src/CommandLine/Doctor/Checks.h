// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Doctor/DisplayServer.h"
#include "CommandLine/Doctor/Finding.h"
#include "Platform/Platform.h"
#include "Support/Clock.h"
#include "Support/Task.h"

#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// What is known before the checks begin. All of it outlives them.
struct Surroundings {
    Clock &clock;
    std::optional<std::string> environmentKey;
    /// XDG_SESSION_TYPE says Wayland.
    bool isWayland = false;
    /// None: DISPLAY names none, or it does not answer in time.
    std::optional<DisplayServer> display;
    bool displayHangs = false;
    bool hasBus = false;
    /// Null while the display hangs: opening it would hang as well.
    Platform *platform = nullptr;
};

/// Looks at one thing. Ends when the stop comes, and then says what did not answer. Main thread.
using Check = Task<Findings> (*)(const Surroundings &around, std::stop_token stop);

Task<Findings> checkSystem(const Surroundings &around, std::stop_token stop);
Task<Findings> checkSession(const Surroundings &around, std::stop_token stop);
Task<Findings> checkScreen(const Surroundings &around, std::stop_token stop);
Task<Findings> checkPortals(const Surroundings &around, std::stop_token stop);
Task<Findings> checkTray(const Surroundings &around, std::stop_token stop);
Task<Findings> checkNotifications(const Surroundings &around, std::stop_token stop);
Task<Findings> checkKeyring(const Surroundings &around, std::stop_token stop);
Task<Findings> checkSound(const Surroundings &around, std::stop_token stop);
Task<Findings> checkCameras(const Surroundings &around, std::stop_token stop);
Task<Findings> checkEncoders(const Surroundings &around, std::stop_token stop);
Task<Findings> checkDisk(const Surroundings &around, std::stop_token stop);
Task<Findings> checkService(const Surroundings &around, std::stop_token stop);
Task<Findings> checkApplication(const Surroundings &around, std::stop_token stop);
Task<Findings> checkOthers(const Surroundings &around, std::stop_token stop);

} // namespace vantrell
