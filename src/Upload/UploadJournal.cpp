// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadJournal.h"

#include "Support/AtomicFile.h"
#include "Support/FilePath.h"
#include "Support/Log.h"
#include "Upload/JournalText.h"

#include <algorithm>
#include <cerrno>

namespace vantrell {

std::expected<std::unique_ptr<UploadJournal>, JournalInUse> UploadJournal::open(std::filesystem::path file) {
    auto lock = JournalLock::acquire(file);
    if (!lock)
        return std::unexpected(lock.error());
    return std::unique_ptr<UploadJournal>(new UploadJournal(std::move(file), std::move(*lock)));
}

UploadJournal::UploadJournal(std::filesystem::path file, JournalLock lock) : m_lock(std::move(lock)) {
    std::error_code none;
    if (const auto time = std::filesystem::last_write_time(file, none); !none)
        m_previousWrite = time;
    bool isUnreadable = false;
    if (const auto bytes = readFile(file)) {
        if (auto entries = decodeJournal(*bytes)) {
            m_entries = std::move(*entries);
            // Earlier versions wrote paths as they were given.
            for (UploadJournalEntry &entry : m_entries)
                entry.masterPath = realPath(entry.masterPath);
        } else {
            qCCritical(logUpload, "upload journal unreadable, starting fresh: %s",
                       entries.error().message.c_str());
            isUnreadable = true;
        }
    } else {
        // Whatever cannot be opened today may still be somebody's uploads.
        isUnreadable = bytes.error().code != ENOENT;
    }
    m_writer = std::make_unique<JournalWriter>(std::move(file), isUnreadable);
}

std::vector<UploadJournalEntry> UploadJournal::read(const std::filesystem::path &file) {
    const auto bytes = readFile(file);
    return bytes ? decodeJournal(*bytes).value_or(std::vector<UploadJournalEntry>())
                 : std::vector<UploadJournalEntry>();
}

UploadJournalEntry *UploadJournal::find(const QUuid &captureId) {
    const auto found = std::ranges::find(m_entries, captureId, &UploadJournalEntry::captureId);
    return found == m_entries.end() ? nullptr : &*found;
}

const UploadJournalEntry *UploadJournal::findFile(const std::filesystem::path &file) const {
    const auto found = std::ranges::find(m_entries, realPath(file).native(), &UploadJournalEntry::masterPath);
    return found == m_entries.end() ? nullptr : &*found;
}

void UploadJournal::upsert(const UploadJournalEntry &entry) {
    if (UploadJournalEntry *const existing = find(entry.captureId))
        *existing = entry;
    else
        m_entries.push_back(entry);
    save();
}

void UploadJournal::remove(const QUuid &captureId) {
    std::erase_if(m_entries, [id = captureId](const auto &entry) { return entry.captureId == id; });
    save();
}

void UploadJournal::reconcileAgainstDisk() {
    const auto gone = std::erase_if(m_entries, [](const UploadJournalEntry &entry) {
        std::error_code unknown;
        // Only what is known to be missing: a disk that answers with an error may come back.
        const bool isGone = !std::filesystem::exists(entry.masterFile(), unknown) && !unknown;
        if (isGone)
            qCWarning(logUpload, "upload %s dropped: its file is gone",
                      qPrintable(entry.captureId.toString(QUuid::WithoutBraces)));
        return isGone;
    });
    if (gone > 0)
        save();
}

void UploadJournal::save() {
    m_writer->submit(m_entries);
}

Task<std::expected<void, Cancelled>> UploadJournal::written(std::stop_token stop) {
    const OneShot<bool> reached = m_writer->written();
    if (!co_await reached.wait(stop))
        co_return std::unexpected(Cancelled{});
    co_return std::expected<void, Cancelled>();
}

std::set<std::string> UploadJournal::livePaths(const std::vector<UploadJournalEntry> &entries) {
    std::set<std::string> paths;
    for (const UploadJournalEntry &entry : entries) {
        paths.insert(entry.masterPath);
        for (const auto *side : {&entry.thumbPath, &entry.metaPath}) {
            if (*side)
                paths.insert(**side);
        }
    }
    return paths;
}

} // namespace vantrell
