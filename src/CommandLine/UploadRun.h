// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ProgressLines.h"
#include "Session/ServiceSession.h"
#include "Shelf/ShelfStore.h"
#include "Support/OneShot.h"
#include "Support/Task.h"
#include "Upload/UploadJournal.h"
#include "Upload/UploadManager.h"

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

/// The upload pipeline as a command uses it: journal, manager, and in place of a panel one progress line for
/// each file on a terminal. Destroying it in the middle leaves everything to be resumed. Main thread.
class UploadRun {
public:
    /// Fails with a sentence when another process has the journal. `session` outlives the run.
    static std::expected<std::unique_ptr<UploadRun>, std::string> create(ServiceSession &session,
                                                                         const CommandContext &context);

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

    /// Each upload's end, as it comes; the progress lines are cleared then.
    std::function<void(const UploadEnd &)> onEnd;

private:
    UploadRun(ServiceSession &session, const CommandContext &context, std::unique_ptr<UploadJournal> journal);

    void noteEnd(const UploadEnd &end);
    void showProgress();

    ServiceSession &m_session;
    ProgressLines m_lines;
    ShelfStore m_shelf;
    std::optional<std::int64_t> m_videoByteCap;
    std::map<QUuid, UploadEnd> m_ends;
    /// Resolved when an upload ends, or the run is interrupted: for whoever waits in `finish`.
    OneShot<bool> m_changed;
    bool m_isInterrupted = false;
    std::unique_ptr<UploadJournal> m_journal;
    UploadManager m_manager;
    ShelfStore::Observation m_observation;
};

/// What an interrupted command says.
inline constexpr char uploadInterrupted[] = "Interrupted: \"vantrell-capture resume\" finishes the upload";
/// The same before there is anything to resume.
inline constexpr char uploadNotBegun[] =
    "Interrupted before the upload began: \"vantrell-capture upload\" sends the file";

} // namespace vantrell
