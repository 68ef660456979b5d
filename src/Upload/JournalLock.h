// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/FileLock.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace vantrell {

/// Another process has the journal.
struct JournalInUse {
    std::string description() const {
        return "Another Vantrell Capture is running and has the list of uploads open";
    }
};

/// The right to write one journal, held by at most one process.
class JournalLock {
public:
    /// Where `journal` cannot be locked at all the uploads matter more than the lock: the log says why, and
    /// the result holds nothing.
    static std::expected<JournalLock, JournalInUse> acquire(const std::filesystem::path &journal);

private:
    explicit JournalLock(std::optional<FileLock> lock) : m_lock(std::move(lock)) {}

    std::optional<FileLock> m_lock;
};

} // namespace vantrell
