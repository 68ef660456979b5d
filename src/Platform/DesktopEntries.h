// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// The applications that the desktop knows by their desktop files: `applications/*.desktop` below
/// $XDG_DATA_HOME and $XDG_DATA_DIRS. Reads from disk, and remembers. Thread-bound.
class DesktopEntries {
public:
    /// The folders as the environment names them now.
    DesktopEntries();

    /// The application's name in the user's language. `id` is a desktop file's name without ".desktop" or
    /// the class of an application's windows.
    std::optional<std::string> nameOf(const std::string &id);

private:
    std::optional<std::string> find(const std::string &id);
    const std::map<std::string, std::string> &namesByClass();

    std::vector<std::filesystem::path> m_folders;
    std::map<std::string, std::optional<std::string>> m_known;
    /// Filled when first needed: it takes the reading of every desktop file.
    std::optional<std::map<std::string, std::string>> m_namesByClass;
};

} // namespace vantrell
