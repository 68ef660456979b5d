// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <chrono>
#include <filesystem>
#include <vector>

namespace vantrell {

/// Deletes captures that are older than seven days from the captures folder, with all that belongs to them.
/// For the start of the application and of the commands that capture or upload. What somebody still needs
/// stays: the files of pending uploads, recordings that are under way or were cut off, and `wanted`. Nothing
/// is deleted while the upload journal cannot be read. Blocks on the disk.
void pruneCaptures(const std::vector<std::filesystem::path> &wanted,
                   std::chrono::system_clock::time_point now = std::chrono::system_clock::now());

} // namespace vantrell
