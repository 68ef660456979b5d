// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingJournal.h"

#include "Recording/RecordingRecord.h"
#include "Support/BlockingWork.h"
#include "Support/DiskFile.h"
#include "Support/Log.h"

#include <mutex>
#include <utility>

#include <unistd.h>

namespace vantrell {

namespace {

constexpr std::chrono::seconds flushDelay(1);

} // namespace

/// The file and what waits for it. Shared with the workers that write it, in whatever order they run.
class RecordingJournal::File {
public:
    explicit File(std::filesystem::path path) : m_path(std::move(path)) {}

    void queue(std::string text) {
        std::scoped_lock lock(m_queueMutex);
        m_queue += text;
    }

    /// Worker thread.
    void write() {
        std::scoped_lock lock(m_fileMutex);
        std::string text;
        {
            std::scoped_lock queueLock(m_queueMutex);
            text = std::exchange(m_queue, {});
        }
        if (text.empty() || m_isClosed)
            return;
        if (const auto written = append(text); !written) {
            m_isClosed = true;
            qCCritical(logCapture, "recording's journal not written: %s", written.error().message.c_str());
        }
    }

    /// Worker thread. Nothing is written from now on.
    void close() {
        write();
        std::scoped_lock lock(m_fileMutex);
        m_isClosed = true;
    }

    /// Worker thread.
    void discard() {
        std::scoped_lock lock(m_fileMutex);
        m_isClosed = true;
        if (m_file.isOpen())
            RecordingJournal::remove(m_path);
    }

private:
    std::expected<void, PlatformError> append(std::string_view text) {
        const bool isNew = !m_file.isOpen();
        if (isNew) {
            auto created = DiskFile::create(m_path);
            if (!created)
                return std::unexpected(created.error());
            m_file = std::move(*created);
            if (const auto locked = m_file.lock(); !locked)
                return locked;
        }
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(text.data());
        if (const auto written = m_file.writeAt(m_end, std::span(bytes, text.size())); !written)
            return written;
        m_end += text.size();
        if (const auto synced = m_file.syncData(); !synced)
            return synced;
        return isNew ? syncFolder(m_path.parent_path()) : std::expected<void, PlatformError>();
    }

    const std::filesystem::path m_path;
    std::mutex m_fileMutex;
    DiskFile m_file;
    std::uint64_t m_end = 0;
    bool m_isClosed = false;
    std::mutex m_queueMutex;
    std::string m_queue;
};

RecordingJournal::RecordingJournal(std::filesystem::path path, const RecordingOptions &options, Clock &clock)
    : m_path(std::move(path)), m_recordingId(options.recordingId), m_clock(clock),
      m_file(std::make_shared<File>(m_path)), m_pending(recordingLines::beginning(options, clock.wallNow())) {
}

RecordingJournal::~RecordingJournal() {
    flush();
}

void RecordingJournal::addSegment(const std::filesystem::path &movie) {
    add(recordingLines::segment(movie));
    flush();
}

void RecordingJournal::addAnchor(double hostTime) {
    add(recordingLines::anchor(hostTime));
    flush();
}

void RecordingJournal::addEvent(const RawEvent &event) {
    add(recordingLines::event(event));
}

void RecordingJournal::addCameraSegment(const std::filesystem::path &movie) {
    add(recordingLines::cameraSegment(movie));
    flush();
}

void RecordingJournal::addCameraAnchor(const std::filesystem::path &movie, double hostTime) {
    add(recordingLines::cameraAnchor(movie, hostTime));
    flush();
}

void RecordingJournal::setMovie(const std::filesystem::path &movie) {
    add(recordingLines::movie(movie));
    flush();
}

Task<std::expected<void, Cancelled>> RecordingJournal::close(std::stop_token stop) {
    m_file->queue(std::exchange(m_pending, {}));
    co_return co_await runBlocking([file = m_file] { file->close(); }, stop);
}

void RecordingJournal::discard() {
    m_pending.clear();
    postToWorker([file = m_file] { file->discard(); });
}

bool RecordingJournal::remove(const std::filesystem::path &path) {
    return !path.empty() && ::unlink(path.c_str()) == 0;
}

std::expected<void, PlatformError> RecordingJournal::append(const std::filesystem::path &path,
                                                            const std::string &line) {
    const auto journal = DiskFile::openForWriting(path);
    if (!journal)
        return std::unexpected(journal.error());
    const auto end = journal->size();
    if (!end)
        return std::unexpected(end.error());
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(line.data());
    if (const auto written = journal->writeAt(*end, std::span(bytes, line.size())); !written)
        return written;
    return journal->syncData();
}

void RecordingJournal::add(std::string line) {
    m_pending += line;
    if (std::exchange(m_isFlushDue, true))
        return;
    m_scope.start(this, &RecordingJournal::flushLater);
}

void RecordingJournal::flush() {
    if (m_pending.empty())
        return;
    m_file->queue(std::exchange(m_pending, {}));
    postToWorker([file = m_file] { file->write(); });
}

Task<> RecordingJournal::flushLater(std::stop_token stop) {
    const auto slept = co_await m_clock.sleep(flushDelay, stop);
    if (!slept)
        co_return;
    m_isFlushDue = false;
    flush();
}

} // namespace vantrell
