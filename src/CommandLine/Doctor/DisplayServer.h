// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <map>
#include <string>
#include <vector>

namespace vantrell {

/// What an X server and the programs around it say about themselves.
struct DisplayServer {
    /// Nobody answers at the address in DISPLAY.
    bool isReachable = false;
    std::string vendor;
    /// Of the extensions that recording wants, those that are missing.
    std::vector<std::string> missing;
    /// Empty: there is none, or one that does not say so.
    std::string windowManager;
    bool hasCompositor = false;
    bool hasTray = false;
};

/// Asks the server in DISPLAY. Blocks for as long as the server does; any thread.
DisplayServer askDisplayServer();

} // namespace vantrell
