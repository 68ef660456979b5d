// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace vantrell {

/// The keys of a desktop entry's main group, or of another in a file of that kind, with their values as they
/// are written, names of languages included ("Name[de]"). None when there is no such file. Blocks on the
/// disk.
std::optional<std::map<std::string, std::string>>
readDesktopEntryFile(const std::filesystem::path &file, const std::string &group = "Desktop Entry");

/// The program's own desktop entry, which starts `program` with `arguments` (words without blanks, field
/// codes among them).
std::string ownDesktopEntry(const std::filesystem::path &program, const std::string &arguments,
                            const std::map<std::string, std::string> &furtherKeys = {});

} // namespace vantrell
