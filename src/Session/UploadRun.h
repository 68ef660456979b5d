// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Session/ServiceSession.h"
#include "Shelf/ShelfStore.h"
#include "Support/Clock.h"
#include "Support/OneShot.h"
#include "Support/Task.h"
#include "Upload/UploadJournal.h"
#include "Upload/UploadManager.h"

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>

namespace vantrell {

/// The upload pipeline as one run of the program has it: journal, manager and the shelf that shows them.
/// Destroying it in the middle leaves everything to be resumed. Main thread.
class UploadRun {
public:
    /// Fails with a sentence when another process has the journal. Session and clock outlive the run.
    static std::expected<std::unique_ptr<UploadRun>, std::string> create(ServiceSession &session,
                                                                         Clock &clock);

    /// What is on its way.
    ShelfStore &shelf() { return m_shelf; }
    UploadManager &manager() { return m_manager; }
    UploadJournal &journal() { return *m_journal; }
    /// All that was handed over up to here is on disk.
    Task<std::expected<void, Cancelled>> written(std::stop_token stop) { return m_journal->written(stop); }
    /// The plan's size limit, where somebody else asks for it.
    void setVideoByteCap(std::optional<std::int64_t> bytes) { m_videoByteCap = bytes; }
    /// One of those that have a slot; the others wait for one.
    bool isRunning(const QUuid &entryId) const { return m_manager.isRunning(entryId); }

    /// Asks for the plan's limits. Without an answer the service itself will say what is too large.
    Task<> fetchLimits(std::stop_token stop);

    /// Goes on with what earlier runs of any kind left. With `retryParked` also with what waits for the user,
    /// whose captures of deleted projects move to `project`. Returns their journal ids.
    std::set<QUuid> resume(bool retryParked, const std::optional<std::string> &project);

    /// Hands a capture over, or finds the upload of the same file that is under way already, or that was when
    /// the run began and has arrived since. Without a project it waits in the journal for `resume`. The id
    /// there.
    QUuid add(CaptureResult capture, const std::optional<std::string> &projectId);

    /// Waits until each of these has ended, whatever else is under way; false when it was interrupted before.
    Task<bool> finish(std::set<QUuid> entries, std::stop_token stop);
    void interrupt() {
        m_isInterrupted = true;
        m_changed.resolve(true);
    }

    /// How an upload ended, null while it has not.
    const UploadEnd *endOf(const QUuid &entryId) const;
    /// For a run without an end: how an upload ended is forgotten after so long. Without this it never is.
    void forgetEndsAfter(std::chrono::seconds age) { m_endsKept = age; }

    /// Each upload's end, as it comes.
    std::function<void(const UploadEnd &)> onEnd;

private:
    UploadRun(ServiceSession &session, Clock &clock, std::unique_ptr<UploadJournal> journal);

    void noteEnd(const UploadEnd &end);

    ServiceSession &m_session;
    Clock &m_clock;
    ShelfStore m_shelf;
    std::optional<std::int64_t> m_videoByteCap;
    struct PastEnd {
        UploadEnd end;
        /// On the clock of `Clock::hostNow`.
        double at;
    };
    std::map<QUuid, PastEnd> m_ends;
    std::optional<std::chrono::seconds> m_endsKept;
    /// Resolved when an upload ends, or the run is interrupted: for whoever waits in `finish`.
    OneShot<bool> m_changed;
    bool m_isInterrupted = false;
    std::unique_ptr<UploadJournal> m_journal;
    UploadManager m_manager;
};

} // namespace vantrell
