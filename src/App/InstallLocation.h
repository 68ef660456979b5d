// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/Ask.h"
#include "App/PortableCopy.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// Where the running copy lies, and its move into the user's own applications when that is a place that goes
/// away. Main thread.
class InstallLocation {
public:
    struct Options {
        /// None: a package of the distribution, which is never moved.
        std::optional<PortableCopy> copy;
        /// The user's home, and the data folder in it where desktop entries and icons are.
        std::filesystem::path home;
        std::filesystem::path data;
        /// Folders that are emptied or cleared up.
        std::vector<std::filesystem::path> passingFolders;
        /// How the desktop calls itself.
        std::string systemName;
        /// Starts the moved copy and ends this process; false when it does not start.
        std::function<bool(const std::filesystem::path &program)> relaunch;

        static Options fromEnvironment(std::string systemName);
    };

    explicit InstallLocation(Options options);

    /// The running copy lies on a removable disk, in an image that is mounted read-only, in the downloads or
    /// among temporary files. Looks each time.
    bool needsMove() const;

    /// Asks when a move is needed. True when the moved copy takes over: the caller stops its launch.
    Task<bool> offerMoveIfNeeded(Ask ask, std::stop_token stop);

    /// Copies into ~/.local/lib/vantrell-capture in place of what is there, links it from ~/.local/bin and
    /// tells the desktop of it. Until the copy is whole the old one stays. Returns the program's new place.
    /// Blocks on the disk; thread-safe.
    std::expected<std::filesystem::path, PlatformError> install() const;

private:
    std::filesystem::path destination() const;
    std::expected<void, PlatformError> copyTo(const std::filesystem::path &folder) const;
    std::expected<void, PlatformError> tellDesktop(const std::filesystem::path &program) const;
    Task<> showMoveFailure(Ask ask, std::string reason, std::stop_token stop) const;

    const Options m_options;
};

} // namespace vantrell
