// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>

namespace vantrell {

/// The desktop's trash, as file managers show it and give back from it.
class Trash {
public:
    /// Moves the file or folder there: into the user's own trash when it lies on the same disk, else into one
    /// at the top of its disk. Returns where it lies now. It is either moved whole or left as it was; disks
    /// without a place for a trash are an error. Blocks on the disk; thread-safe.
    static std::expected<std::filesystem::path, PlatformError> moveToTrash(const std::filesystem::path &file);
};

} // namespace vantrell
