// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Recording/RawEvent.h"
#include "Recording/RecordingOptions.h"
#include "Support/Clock.h"
#include "Support/PlatformError.h"
#include "Support/TaskScope.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Keeps on disk what a recording would need after a crash besides its movies: what is recorded, which movies
/// belong to it, and the input events. Main thread; the disk is written to on worker threads, at most once a
/// second. What survives: a kill or a power cut, everything noted more than a second (and the disk's own
/// time) before. Without a working disk nothing is kept and the log says so: a recording is never stopped by
/// it.
///
/// While the journal lives, its file is locked, so that no other process takes the recording for abandoned.
class RecordingJournal {
public:
    /// `path` must not exist. The clock must outlive the journal.
    RecordingJournal(std::filesystem::path path, const RecordingOptions &options, Clock &clock);
    ~RecordingJournal();
    RecordingJournal(const RecordingJournal &) = delete;
    RecordingJournal &operator=(const RecordingJournal &) = delete;

    const std::filesystem::path &path() const { return m_path; }
    /// The options'.
    const std::optional<std::string> &recordingId() const { return m_recordingId; }

    void addSegment(const std::filesystem::path &movie);
    /// The host time that is zero in the segment added last.
    void addAnchor(double hostTime);
    void addEvent(const RawEvent &event);
    /// A movie of the camera's layer.
    void addCameraSegment(const std::filesystem::path &movie);
    /// The host time that is zero in it.
    void addCameraAnchor(const std::filesystem::path &movie, double hostTime);
    /// The recording is whole in this movie; only its delivery is missing.
    void setMovie(const std::filesystem::path &movie);

    /// Writes what waits; what is added later is dropped. The file stays, locked until the journal goes.
    Task<std::expected<void, Cancelled>> close(std::stop_token stop);
    /// Nothing is there to recover: the file goes, what is added later is dropped.
    void discard();

    /// Removes a closed journal; false when it stays. Blocks a little.
    static bool remove(const std::filesystem::path &path);
    /// Adds a line of RecordingRecord to a closed journal. Blocks on the disk.
    static std::expected<void, PlatformError> append(const std::filesystem::path &path,
                                                     const std::string &line);

private:
    class File;

    void add(std::string line);
    void flush();
    Task<> flushLater(std::stop_token stop);

    const std::filesystem::path m_path;
    const std::optional<std::string> m_recordingId;
    Clock &m_clock;
    std::shared_ptr<File> m_file;
    std::string m_pending;
    bool m_isFlushDue = false;
    TaskScope m_scope;
};

} // namespace vantrell
