// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/FileStamp.h"
#include "Capture/CaptureResult.h"
#include "Support/OneShot.h"
#include "Support/TaskScope.h"
#include "Upload/UploadEnd.h"
#include "Upload/UploadFailure.h"
#include "Upload/UploadIds.h"
#include "Upload/UploadJournalEntry.h"
#include "Upload/UploadServices.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// Brings every capture from finished on disk to confirmed on the service.
///
///     enqueue, restore, retry
///        │
///        ▼        slot free (2, first in first out)
///     waiting ─────────────────────────────────────► main file gone ────────────────────────► dropped
///        ▲                                        ├► over the plan's size, project gone ────► parked
///        │                                        ▼
///        │     ┌──────────────────────────► queued: register; with an asset id ask anew
///        │     │                                  │ registered
///        │     │ 2 5 10 20 40 80 160 240 s        ▼
///        │  backing off ◄── passing failure ── uploading: main file, thumbnail, sidecar
///        │     ▲  │ (any phase)                   │ sent
///        │     │  │                               ▼
///        │     │  │ ninth failure              confirming ── 404: forget the asset ──► backing off
///        │     │  ▼                               │
///        └─ parked ◄── final failure (any phase)  ├── confirmed ────────────────────────────► done
///     the user retries                            └── any phase: the service has it already ─► done
///
/// Boxes in the journal: queued, uploading, confirming, failed (parked); done and dropped have no entry. Each
/// change is written before the next call leaves. An upload that backs off keeps its slot. Only a card's
/// message ever tells the user anything.
///
/// Destroying the manager cancels what runs and changes nothing: the journal resumes it all next time.
/// Main thread. Callbacks may call back into the manager, but not destroy it.
class UploadManager {
public:
    /// `videoByteCap`: the plan's size limit for videos in bytes, asked before each upload; none means no
    /// limit.
    UploadManager(UploadServices services, std::function<std::optional<std::int64_t>()> videoByteCap);
    UploadManager(const UploadManager &) = delete;
    UploadManager &operator=(const UploadManager &) = delete;

    /// Takes a finished capture over and returns its journal id. A capture whose metadata has no type has no
    /// sidecar. Without a project it is parked until `retry` brings one.
    QUuid enqueue(std::shared_ptr<const CaptureResult> capture, const std::optional<std::string> &projectId,
                  const QUuid &shelfId);

    /// The same for a capture that cannot be uploaded yet, since no account is connected: it is parked, and
    /// its card shows `message`.
    QUuid keep(std::shared_ptr<const CaptureResult> capture, const QUuid &shelfId,
               const std::string &message);

    /// The user retries a failed card. `currentProjectId` is the project selected now.
    void retry(const UploadIds &ids, const std::optional<std::string> &currentProjectId);

    /// Once at launch, after the journal was reconciled with the disk: a card for every upload of earlier
    /// runs, and on with those that are not parked.
    void restoreFromJournal();

    /// While it holds, nothing is sent; what comes waits.
    void hold() { m_isHeld = true; }
    void release();

    /// It has a slot.
    bool isRunning(const QUuid &entryId) const { return m_active.contains(entryId); }
    /// Nothing runs and nothing waits; parked uploads do not count.
    bool isIdle() const { return m_active.empty() && m_waiting.empty(); }

    /// A project was found deleted on the service; once for each.
    std::function<void(const std::string &projectId)> onProjectGone;
    std::function<void(const UploadEnd &)> onEnd;
    /// The last upload has ended.
    std::function<void()> onIdle;

private:
    /// Into the journal and onto the card; `parkedFor` is why it waits for the user.
    QUuid take(std::shared_ptr<const CaptureResult> capture, const std::optional<std::string> &projectId,
               const std::optional<std::string> &parkedFor, const QUuid &shelfId);
    /// It runs or waits for a slot.
    bool isPending(const QUuid &entryId) const;
    void startOrQueue(const UploadIds &ids);
    void fillSlots();
    Task<> runInSlot(UploadIds ids, std::stop_token stop);
    Task<> run(UploadIds ids, std::stop_token stop);
    /// False when there is nothing to attempt; the upload has then ended.
    bool admit(const UploadIds &ids);
    Task<> attemptUntilEnd(UploadIds ids, std::stop_token stop);
    /// How long to wait before the next attempt; none when the upload has ended.
    std::optional<std::chrono::seconds> afterFailure(const UploadIds &ids, const UploadFailure &failure,
                                                     int retries);

    Task<> writeSideFiles(QUuid entryId, std::shared_ptr<const CaptureResult> capture, std::stop_token stop);
    /// Forgets what was sent of a file that has changed since.
    void noticeChangedFile(UploadJournalEntry &entry);
    Task<> loadPreviews(std::vector<UploadJournalEntry> entries, std::vector<QUuid> shelfIds,
                        std::stop_token stop);

    void finish(const UploadIds &ids, const std::string &assetId);
    void dropVanished(const UploadIds &ids);
    void park(const UploadIds &ids, const std::string &message, const char *reason);
    void parkProjectGone(const UploadIds &ids);
    void tellEnd(const UploadJournalEntry &entry, const UploadIds &ids,
                 std::expected<std::string, std::string> assetId, bool isParked);

    const UploadServices m_services;
    const std::function<std::optional<std::int64_t>()> m_videoByteCap;
    std::set<QUuid> m_active;
    std::deque<UploadIds> m_waiting;
    bool m_fillingSlots = false;
    bool m_isHeld = false;
    /// Found deleted in this run of the program.
    std::set<std::string> m_goneProjectIds;
    /// Captures whose side files are being written.
    std::map<QUuid, OneShot<bool>> m_sideFiles;
    /// What each main file was when its upload began in this run of the program.
    std::map<QUuid, FileStamp> m_stamps;
    TaskScope m_scope;
};

} // namespace vantrell
