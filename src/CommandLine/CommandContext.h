// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Reporter.h"
#include "Platform/LibraryVersion.h"
#include "Platform/Platform.h"
#include "Support/Clock.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// What every command is given. All of it outlives the command.
struct CommandContext {
    Reporter &reporter;
    Clock &clock;
    /// The key from the environment, already wiped from it.
    std::optional<std::string> environmentKey;
    /// Opens the backends of this desktop; the clock outlives them.
    std::function<Platform(Clock &)> loadPlatform;
    /// The libraries that this program uses.
    std::vector<LibraryVersion> (*libraryVersions)() = nullptr;
};

} // namespace vantrell
