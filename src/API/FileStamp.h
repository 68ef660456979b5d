// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <filesystem>

namespace vantrell {

/// What tells whether a path still names the same contents.
struct FileStamp {
    std::int64_t size = 0;
    std::uint64_t inode = 0;
    /// Nanoseconds since 1970.
    std::int64_t modified = 0;

    bool operator==(const FileStamp &) const = default;

    static std::expected<FileStamp, PlatformError> of(const std::filesystem::path &file);
};

} // namespace vantrell
