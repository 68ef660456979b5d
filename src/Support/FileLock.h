// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"
#include "Support/UniqueFd.h"

#include <chrono>
#include <expected>
#include <filesystem>

namespace vantrell {

/// Why a file could not be locked.
struct FileLockError {
    /// Somebody else has the lock; otherwise it could not be made at all (a read-only or full disk, a file
    /// system without locks).
    bool isHeldElsewhere = false;
    PlatformError cause;
};

/// The right to write one file, held by at most one owner in all processes. It ends with the object or with
/// the process, however that dies.
class FileLock {
public:
    /// Locks a file beside `guarded`, named like it with ".lock" behind, which is made when missing and never
    /// removed. Blocks for at most `patience` while somebody else holds it.
    static std::expected<FileLock, FileLockError>
    acquire(const std::filesystem::path &guarded,
            std::chrono::milliseconds patience = std::chrono::milliseconds(0));

private:
    explicit FileLock(UniqueFd file) : m_file(std::move(file)) {}

    UniqueFd m_file;
};

} // namespace vantrell
