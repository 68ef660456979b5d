// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/HttpClient.h"
#include "Support/Clock.h"

#include <functional>
#include <string>

namespace vantrell {

/// Updates of the program, which the system's packages bring. Main thread.
class Updater {
public:
    Updater(HttpClient &, Clock &) {}
    void start() {}
    void checkForUpdates() {}
    bool canCheckForUpdates() const { return false; }
    std::function<void(const std::string &)> onUpdateFound;
    std::function<void()> onSessionFinished;
    std::function<bool()> mayRestart;
};

} // namespace vantrell
