// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <expected>
#include <filesystem>
#include <string>

namespace vantrell {

/// Another process has the journal.
struct JournalInUse {
    std::string description() const {
        return "Another Vantrell Capture is running and has the list of uploads open";
    }
};

/// The right to write one journal, held by at most one process. It ends with the object or with the process,
/// however that dies.
class JournalLock {
public:
    /// Locks a file beside `journal`, which is made when missing and never removed. Where that file cannot be
    /// made or locked at all (a read-only or full disk, a file system without locks) the uploads matter more
    /// than the lock: the log says why, and the result holds nothing.
    static std::expected<JournalLock, JournalInUse> acquire(const std::filesystem::path &journal);

private:
    explicit JournalLock(UniqueFd file) : m_file(std::move(file)) {}

    UniqueFd m_file;
};

} // namespace vantrell
