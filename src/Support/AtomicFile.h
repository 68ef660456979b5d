// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

namespace vantrell {

/// Replaces the file's contents: temporary file in the same folder, fsync, rename, fsync of the folder. After
/// a kill or a power cut the file holds either the old or the new bytes, whole. On failure the old file is
/// untouched and no temporary file is left. Blocks on the disk.
std::expected<void, PlatformError> writeFileAtomically(const std::filesystem::path &path,
                                                       std::string_view bytes);

/// The whole file. For small files that the system itself wrote.
std::expected<std::string, PlatformError> readFile(const std::filesystem::path &path);

} // namespace vantrell
