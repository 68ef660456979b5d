// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadManager.h"

#include "Analytics/Analytics.h"
#include "Capture/CaptureStorage.h"
#include "Shelf/ShelfStore.h"
#include "Support/BlockingWork.h"
#include "Support/Clock.h"
#include "Support/FilePath.h"
#include "Support/Log.h"
#include "Upload/SafeCaptureName.h"
#include "Upload/SideFiles.h"
#include "Upload/UploadAttempt.h"
#include "Upload/UploadJournal.h"
#include "Upload/UploadMessages.h"
#include "Upload/UploadRoute.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantrell {

namespace {

using Phase = UploadJournalEntry::Phase;
using Seconds = std::chrono::seconds;

constexpr std::size_t slots = 2;
constexpr std::array backOff{Seconds(2),  Seconds(5),  Seconds(10),  Seconds(20),
                             Seconds(40), Seconds(80), Seconds(160), Seconds(240)};

std::string textOf(const QUuid &id) {
    return id.toString(QUuid::WithoutBraces).toStdString();
}

/// Gone, and not merely unreadable for a moment.
bool isMissing(const std::filesystem::path &file) {
    std::error_code unknown;
    return !std::filesystem::exists(file, unknown) && !unknown;
}

const char *parkReason(Phase phase) {
    switch (phase) {
    case Phase::uploading:
        return "tus";
    case Phase::confirming:
        return "confirm";
    default:
        return "sign";
    }
}

/// What a card of an earlier run is called: it still tells what was recovered after a crash.
std::string restoredName(const UploadJournalEntry &entry) {
    std::string name = entry.kind == "image" ? "Screenshot" : "Screen recording";
    if (entry.name && entry.name->ends_with(recoveredSuffix))
        name += recoveredSuffix;
    return name;
}

std::int64_t roundedMegabytes(const std::filesystem::path &file) {
    const auto stamp = FileStamp::of(file);
    return stamp ? std::llround(double(stamp->size) / 1e6) : 0;
}

} // namespace

UploadManager::UploadManager(UploadServices services,
                             std::function<std::optional<std::int64_t>()> videoByteCap)
    : m_services(services), m_videoByteCap(std::move(videoByteCap)) {}

QUuid UploadManager::enqueue(std::shared_ptr<const CaptureResult> capture,
                             const std::optional<std::string> &projectId, const QUuid &shelfId) {
    const QUuid id = take(std::move(capture), projectId, std::nullopt, shelfId);
    if (projectId)
        startOrQueue({id, shelfId});
    else
        m_services.shelf.update(shelfId, ShelfItem::NeedsProject{});
    return id;
}

QUuid UploadManager::keep(std::shared_ptr<const CaptureResult> capture, const QUuid &shelfId,
                          const std::string &message) {
    const QUuid id = take(std::move(capture), std::nullopt, message, shelfId);
    m_services.shelf.update(shelfId, ShelfItem::Failed{message});
    return id;
}

QUuid UploadManager::take(std::shared_ptr<const CaptureResult> capture,
                          const std::optional<std::string> &projectId,
                          const std::optional<std::string> &parkedFor, const QUuid &shelfId) {
    const QUuid id = QUuid::createUuid();
    UploadJournalEntry entry{
        .captureId = id,
        .projectId = projectId.value_or(std::string()),
        .kind = std::string(spelling(capture->kind)),
        .mime = capture->mime,
        .name = safeCaptureName(capture->name),
        .durationMs = capture->durationMs,
        .masterPath = realPath(capture->fileURL),
        .createdAt = std::chrono::floor<Seconds>(m_services.clock.wallNow()),
    };
    if (capture->thumbnailJPEG)
        entry.thumbPath = CaptureStorage::thumbnailOf(id).string();
    if (!capture->metadata.type.empty())
        entry.metaPath = CaptureStorage::sidecarOf(id).string();
    if (!projectId) {
        entry.phase = Phase::failed;
        entry.projectGone = true;
        entry.failureReason = parkedFor;
    }
    // The capture is in the journal before anything else is tried; its side files follow in a moment.
    m_services.journal.upsert(entry);
    if (entry.thumbPath || entry.metaPath) {
        m_sideFiles.emplace(id, OneShot<bool>());
        m_scope.start(this, &UploadManager::writeSideFiles, id, std::move(capture));
    }
    m_services.shelf.setEntry(shelfId, id);
    return id;
}

Task<> UploadManager::writeSideFiles(QUuid entryId, std::shared_ptr<const CaptureResult> capture,
                                     std::stop_token stop) {
    const UploadJournalEntry *const planned = m_services.journal.find(entryId);
    if (!planned)
        co_return;
    const auto written =
        co_await runBlocking([entry = *planned, capture] { return sideFiles::write(entry, *capture); }, stop);
    if (!written)
        co_return;
    UploadJournalEntry *const entry = m_services.journal.find(entryId);
    if (entry && ((entry->thumbPath && !written->thumb) || (entry->metaPath && !written->meta))) {
        if (!written->thumb)
            entry->thumbPath.reset();
        if (!written->meta)
            entry->metaPath.reset();
        m_services.journal.save();
    }
    if (const auto waiting = m_sideFiles.extract(entryId))
        waiting.mapped().resolve(true);
}

bool UploadManager::isPending(const QUuid &entryId) const {
    return m_active.contains(entryId) ||
           std::ranges::find(m_waiting, entryId, &UploadIds::entryId) != m_waiting.end();
}

void UploadManager::startOrQueue(const UploadIds &ids) {
    if (isPending(ids.entryId))
        return;
    m_waiting.push_back(ids);
    fillSlots();
}

void UploadManager::release() {
    m_isHeld = false;
    fillSlots();
}

void UploadManager::fillSlots() {
    // An upload may end at once and come back here: a loop, or thousands of them would exhaust the stack.
    if (m_isHeld || std::exchange(m_fillingSlots, true))
        return;
    while (m_active.size() < slots && !m_waiting.empty()) {
        const UploadIds next = m_waiting.front();
        m_waiting.pop_front();
        m_active.insert(next.entryId);
        m_scope.start(this, &UploadManager::runInSlot, next);
    }
    m_fillingSlots = false;
}

Task<> UploadManager::runInSlot(UploadIds ids, std::stop_token stop) {
    co_await run(ids, stop);
    if (stop.stop_requested())
        co_return;
    m_active.erase(ids.entryId);
    fillSlots();
    if (isIdle() && onIdle)
        onIdle();
}

Task<> UploadManager::run(UploadIds ids, std::stop_token stop) {
    if (const auto writing = m_sideFiles.find(ids.entryId); writing != m_sideFiles.end()) {
        const OneShot<bool> written = writing->second;
        if (!co_await written.wait(stop))
            co_return;
    }
    // Whatever led here is in the journal before the first call.
    if (!co_await m_services.journal.written(stop))
        co_return;
    if (admit(ids))
        co_await attemptUntilEnd(ids, stop);
}

bool UploadManager::admit(const UploadIds &ids) {
    const UploadJournalEntry *const entry = m_services.journal.find(ids.entryId);
    if (!entry)
        return false;
    if (isMissing(entry->masterFile())) {
        dropVanished(ids);
        return false;
    }
    if (entry->kind == "video") {
        const auto cap = m_videoByteCap ? m_videoByteCap() : std::nullopt;
        const auto stamp = FileStamp::of(entry->masterFile());
        if (cap && stamp && stamp->size > *cap) {
            park(ids, uploadMessages::overSizeLimit, "size_cap");
            return false;
        }
    }
    if (m_goneProjectIds.contains(entry->projectId)) {
        parkProjectGone(ids);
        return false;
    }
    return true;
}

Task<> UploadManager::attemptUntilEnd(UploadIds ids, std::stop_token stop) {
    for (int retries = 0;; ++retries) {
        UploadJournalEntry *const entry = m_services.journal.find(ids.entryId);
        if (!entry)
            co_return;
        noticeChangedFile(*entry);
        UploadAttempt attempt(m_services, ids);
        const auto outcome = co_await attempt.run(stop);
        if (stop.stop_requested())
            co_return;
        if (outcome) {
            const UploadJournalEntry *const uploaded = m_services.journal.find(ids.entryId);
            finish(ids, uploaded ? uploaded->assetId.value_or("") : "");
            co_return;
        }
        const auto wait = afterFailure(ids, outcome.error(), retries);
        if (!wait || !co_await m_services.clock.sleep(*wait, stop))
            co_return;
    }
}

std::optional<Seconds> UploadManager::afterFailure(const UploadIds &ids, const UploadFailure &failure,
                                                   int retries) {
    UploadJournalEntry *const entry = m_services.journal.find(ids.entryId);
    const Phase phase = entry ? entry->phase : Phase::queued;
    const UploadRoute route = routeFor(failure, phase);
    if (const auto *uploaded = std::get_if<route::AlreadyUploaded>(&route)) {
        finish(ids, uploaded->assetId);
        return std::nullopt;
    }
    // A file that is gone will not come back by waiting.
    if (entry && isMissing(entry->masterFile())) {
        dropVanished(ids);
        return std::nullopt;
    }
    if (std::holds_alternative<route::ProjectGone>(route)) {
        parkProjectGone(ids);
        return std::nullopt;
    }
    if (const auto *parking = std::get_if<route::Park>(&route)) {
        park(ids, parking->message, parkReason(phase));
        return std::nullopt;
    }
    if (entry && std::holds_alternative<route::Restart>(route)) {
        entry->reset();
        m_services.journal.save();
    }
    const std::string id = textOf(ids.entryId);
    const std::string why = logText(failure);
    if (std::size_t(retries) >= backOff.size()) {
        qCCritical(logUpload, "upload %s exhausted retries: %s", id.c_str(), why.c_str());
        park(ids, uploadMessages::checkConnection, "network");
        return std::nullopt;
    }
    const Seconds wait = backOff[std::size_t(retries)];
    qCInfo(logUpload, "upload %s retrying in %fs: %s", id.c_str(), double(wait.count()), why.c_str());
    return wait;
}

void UploadManager::noticeChangedFile(UploadJournalEntry &entry) {
    const auto stamp = FileStamp::of(entry.masterFile());
    if (!stamp)
        return;
    const auto [known, isFirst] = m_stamps.emplace(entry.captureId, *stamp);
    if (isFirst || known->second == *stamp)
        return;
    known->second = *stamp;
    entry.reset();
    m_services.journal.save();
}

void UploadManager::finish(const UploadIds &ids, const std::string &assetId) {
    const UploadJournalEntry *const found = m_services.journal.find(ids.entryId);
    if (!found)
        return;
    const UploadJournalEntry entry = *found;
    m_services.analytics.track("cap.upload_completed",
                               {{"kind", entry.kind}, {"mb", roundedMegabytes(entry.masterFile())}});
    m_services.journal.remove(ids.entryId);
    m_services.shelf.update(ids.shelfId, ShelfItem::Done{entry.projectId});
    qCInfo(logUpload, "capture uploaded: %s", textOf(ids.entryId).c_str());
    tellEnd(entry, ids, assetId, false);
}

void UploadManager::dropVanished(const UploadIds &ids) {
    const UploadJournalEntry *const found = m_services.journal.find(ids.entryId);
    if (!found)
        return;
    const UploadJournalEntry entry = *found;
    m_services.journal.remove(ids.entryId);
    m_services.shelf.update(ids.shelfId, ShelfItem::Failed{uploadMessages::fileCleanedUp});
    qCCritical(logUpload, "upload %s dropped: its file is gone", textOf(ids.entryId).c_str());
    tellEnd(entry, ids, std::unexpected(uploadMessages::fileCleanedUp), false);
}

void UploadManager::park(const UploadIds &ids, const std::string &message, const char *reason) {
    m_services.analytics.track("cap.upload_failed", {{"reason", reason}});
    // A copy: who watches the card may change the journal.
    std::optional<UploadJournalEntry> parked;
    if (UploadJournalEntry *const entry = m_services.journal.find(ids.entryId)) {
        entry->phase = Phase::failed;
        entry->failureReason = message;
        parked = *entry;
        m_services.journal.save();
    }
    m_services.shelf.update(ids.shelfId, ShelfItem::Failed{message});
    qCCritical(logUpload, "upload %s parked as failed: %s", textOf(ids.entryId).c_str(), message.c_str());
    if (parked)
        tellEnd(*parked, ids, std::unexpected(message), true);
}

void UploadManager::parkProjectGone(const UploadIds &ids) {
    UploadJournalEntry *const entry = m_services.journal.find(ids.entryId);
    if (!entry)
        return;
    const std::string projectId = entry->projectId;
    const bool isNew = m_goneProjectIds.insert(projectId).second;
    entry->projectGone = true;
    park(ids, uploadMessages::projectDeleted, "project_gone");
    if (isNew && onProjectGone)
        onProjectGone(projectId);
}

void UploadManager::tellEnd(const UploadJournalEntry &entry, const UploadIds &ids,
                            std::expected<std::string, std::string> assetId, bool isParked) {
    std::optional<FileStamp> stamp;
    if (const auto known = m_stamps.find(entry.captureId); known != m_stamps.end()) {
        stamp = known->second;
        if (!isParked)
            m_stamps.erase(known);
    }
    if (onEnd)
        onEnd({ids, entry.masterFile(), entry.projectId, std::move(assetId), isParked, stamp});
}

void UploadManager::retry(const UploadIds &ids, const std::optional<std::string> &currentProjectId) {
    if (isPending(ids.entryId))
        return;
    UploadJournalEntry *const entry = m_services.journal.find(ids.entryId);
    if (!entry) {
        m_services.shelf.update(ids.shelfId, ShelfItem::Failed{uploadMessages::captureGone});
        return;
    }
    if (isMissing(entry->masterFile())) {
        dropVanished(ids);
        return;
    }
    if (entry->projectGone.value_or(false)) {
        if (!currentProjectId || *currentProjectId == entry->projectId ||
            m_goneProjectIds.contains(*currentProjectId)) {
            m_services.shelf.update(ids.shelfId, ShelfItem::NeedsProject{});
            return;
        }
        entry->projectId = *currentProjectId;
        entry->projectGone.reset();
        entry->reset();
    }
    entry->phase = Phase::queued;
    entry->failureReason.reset();
    m_services.journal.save();
    m_services.shelf.update(ids.shelfId, ShelfItem::Uploading{});
    startOrQueue(ids);
}

void UploadManager::restoreFromJournal() {
    const std::vector<UploadJournalEntry> entries = m_services.journal.entries();
    std::vector<QUuid> shelfIds;
    for (const UploadJournalEntry &entry : entries) {
        ShelfItem::Status status = ShelfItem::Uploading{};
        if (entry.phase == Phase::failed && entry.projectId.empty() && !entry.failureReason)
            status = ShelfItem::NeedsProject{};
        else if (entry.phase == Phase::failed)
            status = ShelfItem::Failed{entry.failureReason.value_or(uploadMessages::failed)};
        shelfIds.push_back(m_services.shelf.addRestored(restoredName(entry), entry.masterFile(),
                                                        entry.durationMs, entry.captureId, status));
    }
    m_scope.start(this, &UploadManager::loadPreviews, entries, shelfIds);

    const auto previousWrite = m_services.journal.previousWrite();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        // A file written to after the journal was last saved is not the one whose upload was begun.
        std::error_code unknown;
        const auto fileTime = std::filesystem::last_write_time(entries[i].masterFile(), unknown);
        UploadJournalEntry *const entry = m_services.journal.find(entries[i].captureId);
        if (entry && !unknown && previousWrite && fileTime > *previousWrite && entry->tusLocation) {
            entry->assetId.reset();
            entry->tusLocation.reset();
            m_services.journal.save();
        }
        if (entries[i].phase == Phase::failed)
            continue;
        qCInfo(logUpload, "resuming interrupted upload %s", textOf(entries[i].captureId).c_str());
        startOrQueue({entries[i].captureId, shelfIds[i]});
    }
}

Task<> UploadManager::loadPreviews(std::vector<UploadJournalEntry> entries, std::vector<QUuid> shelfIds,
                                   std::stop_token stop) {
    // One after the other: thousands of pictures at once would be a heavy start.
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto preview =
            co_await runBlocking([entry = entries[i]] { return sideFiles::preview(entry); }, stop);
        if (!preview)
            co_return;
        if (!preview->isNull())
            m_services.shelf.setRestoredPreview(shelfIds[i], *preview);
    }
}

} // namespace vantrell
