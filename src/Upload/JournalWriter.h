// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/OneShot.h"
#include "Support/WorkerThread.h"
#include "Upload/UploadJournalEntry.h"

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace vantrell {

/// Writes a journal's file on a thread of its own, because an fsync takes as long as the disk likes. Always
/// the newest list: one that was overtaken before its turn is not written. Thread-safe.
class JournalWriter {
public:
    /// `keepUnreadable`: the file holds something that could not be read; before it is replaced for the first
    /// time it is kept beside under another name.
    JournalWriter(std::filesystem::path file, bool keepUnreadable);
    /// Writes what waits, then ends.
    ~JournalWriter();
    JournalWriter(const JournalWriter &) = delete;
    JournalWriter &operator=(const JournalWriter &) = delete;

    void submit(std::vector<UploadJournalEntry> entries);

    /// Resolves when everything that was submitted before this call is on the disk, or has failed to get
    /// there (which is logged).
    OneShot<bool> written();
    /// Blocks until then.
    void flush();

private:
    void run();
    void write(const std::vector<UploadJournalEntry> &entries);

    const std::filesystem::path m_file;
    /// The writer's thread only.
    bool m_keepUnreadable;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<std::vector<UploadJournalEntry>> m_pending;
    /// How many lists were submitted, and the newest of them whose turn is over.
    std::uint64_t m_submitted = 0;
    std::uint64_t m_done = 0;
    std::vector<std::pair<std::uint64_t, OneShot<bool>>> m_waiting;
    bool m_isStopping = false;

    WorkerThread m_thread;
};

} // namespace vantrell
