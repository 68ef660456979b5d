// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/JournalWriter.h"

#include "Support/AtomicFile.h"
#include "Support/Log.h"
#include "Upload/JournalText.h"

#include <cerrno>
#include <expected>

#include <unistd.h>

namespace vantrell {

namespace {

/// Gives the file a second name that is not taken, which needs no room on the disk; a copy where the file
/// system knows no links. A file that is not there needs nothing.
std::expected<void, PlatformError> keepBeside(const std::filesystem::path &file) {
    const std::string base = file.string() + ".unreadable";
    for (int n = 1; n < 1000; ++n) {
        const std::string name = n == 1 ? base : base + "-" + std::to_string(n);
        if (::link(file.c_str(), name.c_str()) == 0 || errno == ENOENT)
            return {};
        if (errno == EEXIST)
            continue;
        const int whyNoLink = errno;
        const auto bytes = readFile(file);
        if (!bytes)
            return std::unexpected(PlatformError::fromErrno("keep unreadable journal", whyNoLink));
        return writeFileAtomically(name, *bytes);
    }
    return std::unexpected(PlatformError::fromErrno("keep unreadable journal", EEXIST));
}

} // namespace

JournalWriter::JournalWriter(std::filesystem::path file, bool keepUnreadable)
    : m_file(std::move(file)), m_keepUnreadable(keepUnreadable),
      m_thread("upload journal", [this] { run(); }) {}

JournalWriter::~JournalWriter() {
    {
        std::scoped_lock lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
}

void JournalWriter::submit(std::vector<UploadJournalEntry> entries) {
    {
        std::scoped_lock lock(m_mutex);
        m_pending = std::move(entries);
        ++m_submitted;
    }
    m_changed.notify_all();
}

OneShot<bool> JournalWriter::written() {
    OneShot<bool> reached;
    std::scoped_lock lock(m_mutex);
    if (m_done >= m_submitted)
        reached.resolve(true);
    else
        m_waiting.emplace_back(m_submitted, reached);
    return reached;
}

void JournalWriter::flush() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, wanted = m_submitted] { return m_done >= wanted; });
}

void JournalWriter::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_pending || m_isStopping; });
        if (!m_pending)
            return;
        const std::vector<UploadJournalEntry> entries = *std::exchange(m_pending, std::nullopt);
        const std::uint64_t turn = m_submitted;
        lock.unlock();
        write(entries);
        lock.lock();
        m_done = turn;
        std::erase_if(m_waiting, [turn](const auto &waiting) {
            return waiting.first <= turn && (waiting.second.resolve(true), true);
        });
        m_changed.notify_all();
    }
}

void JournalWriter::write(const std::vector<UploadJournalEntry> &entries) {
    std::expected<void, PlatformError> result;
    if (m_keepUnreadable)
        result = keepBeside(m_file);
    if (result) {
        m_keepUnreadable = false;
        result = writeFileAtomically(m_file, encodeJournal(entries));
    }
    if (!result)
        qCCritical(logUpload, "upload journal write failed: %s", result.error().message.c_str());
}

} // namespace vantrell
