// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/Task.h"
#include "Upload/JournalLock.h"
#include "Upload/JournalWriter.h"
#include "Upload/UploadJournalEntry.h"

#include <chrono>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// Every capture that was handed over for upload and has not ended, in the order of handing over, kept in one
/// file. Main thread; the file is written on a thread of its own.
///
/// What survives:
/// - a kill of the process at any instant: every change whose `written` has resolved, and possibly later
///   ones. The file is always whole: the list before or after a change, never a mixture.
/// - a power cut: the same, because the new file is fsynced before it replaces the old one, and the folder
///   after it, before `written` resolves.
/// - a write that fails (full or read-only disk): the old file stays whole, the log says why, the list in
///   memory goes on, and the next change writes all of it again.
/// - a file that cannot be read: it is logged once and kept beside as "upload-journal.json.unreadable" before
///   the first change replaces it.
///
/// The manager makes no call to the service or to storage before the change that led to it is written.
class UploadJournal {
public:
    /// Locks and reads the journal in `file`; none there is an empty journal. Fails only when another process
    /// has it. Blocks on the disk.
    static std::expected<std::unique_ptr<UploadJournal>, JournalInUse> open(std::filesystem::path file);

    /// A look at a journal that may belong to another process; empty when there is none to read.
    static std::vector<UploadJournalEntry> read(const std::filesystem::path &file);

    /// Writes what waits to be written.
    ~UploadJournal() = default;
    UploadJournal(const UploadJournal &) = delete;
    UploadJournal &operator=(const UploadJournal &) = delete;

    const std::vector<UploadJournalEntry> &entries() const { return m_entries; }
    /// To be changed in place and then saved. Null when there is none; valid until the list changes.
    UploadJournalEntry *find(const QUuid &captureId);
    /// The upload of that file, whatever way leads to it. Null when there is none. Looks at the disk.
    const UploadJournalEntry *findFile(const std::filesystem::path &file) const;

    /// Replaces the entry with the same id in its place, or appends; saves.
    void upsert(const UploadJournalEntry &entry);
    /// Saves also when there was none.
    void remove(const QUuid &captureId);
    /// Removes the entries whose main file is gone, which the log tells; saves when there were any. Blocks on
    /// the disk.
    void reconcileAgainstDisk();
    /// Hands the whole list to the writer.
    void save();

    /// Waits until all that was saved is on disk, or the log says why it is not.
    Task<std::expected<void, Cancelled>> written(std::stop_token stop);
    /// Blocks until then: for the end of the program and for tests.
    void flush() { m_writer->flush(); }

    /// Every path that a pending upload still needs.
    std::set<std::string> livePaths() const { return livePaths(m_entries); }
    static std::set<std::string> livePaths(const std::vector<UploadJournalEntry> &entries);

    /// When the file was last written before it was opened; none when there was none.
    std::optional<std::filesystem::file_time_type> previousWrite() const { return m_previousWrite; }

private:
    UploadJournal(std::filesystem::path file, JournalLock lock);

    const JournalLock m_lock;
    std::optional<std::filesystem::file_time_type> m_previousWrite;
    std::vector<UploadJournalEntry> m_entries;
    std::unique_ptr<JournalWriter> m_writer;
};

} // namespace vantrell
