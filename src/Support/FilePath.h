// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vantrell {

/// The one path by which a file is known, whatever way led to it: absolute, without links, dots and doubled
/// slashes. What does not exist keeps its name below the part that does. Looks at the disk, but opens
/// nothing.
std::filesystem::path realPath(const std::filesystem::path &path);

/// An absolute path as text for JSON, from which `pathFromText` makes the same bytes again. Almost always the
/// path itself; a path that is not UTF-8, which JSON cannot hold, becomes a "file:///..." address with the
/// odd bytes percent-encoded. The two cannot be mistaken for each other: an absolute path begins with a
/// slash.
std::string textOfPath(const std::filesystem::path &path);
std::filesystem::path pathFromText(std::string_view text);

} // namespace vantrell
