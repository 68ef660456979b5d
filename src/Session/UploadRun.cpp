// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/UploadRun.h"

#include "Analytics/Analytics.h"
#include "Capture/CaptureStorage.h"
#include "Support/FilePath.h"

#include <algorithm>

namespace vantrell {

std::expected<std::unique_ptr<UploadRun>, std::string> UploadRun::create(ServiceSession &session,
                                                                         Clock &clock) {
    auto journal = UploadJournal::open(CaptureStorage::journalURL());
    if (!journal)
        return std::unexpected(journal.error().description());
    return std::unique_ptr<UploadRun>(new UploadRun(session, clock, std::move(*journal)));
}

UploadRun::UploadRun(ServiceSession &session, Clock &clock, std::unique_ptr<UploadJournal> journal)
    : m_session(session), m_clock(clock), m_shelf(clock), m_journal(std::move(journal)),
      m_manager({session.api(), session.http(), *m_journal, m_shelf, Analytics::shared(), clock},
                [this] { return m_videoByteCap; }) {
    m_manager.onEnd = [this](const UploadEnd &end) { noteEnd(end); };
    m_manager.onIdle = [this] { m_changed.resolve(true); };
}

Task<> UploadRun::fetchLimits(std::stop_token stop) {
    const auto limits = co_await m_session.limits(stop);
    if (limits)
        m_videoByteCap = limits->maxVideoUploadBytes;
}

std::set<QUuid> UploadRun::resume(bool retryParked, const std::optional<std::string> &project) {
    m_journal->reconcileAgainstDisk();
    m_manager.restoreFromJournal();
    std::set<QUuid> resumed;
    for (const ShelfItem &item : std::vector(m_shelf.items())) {
        if (item.canRetry() && !retryParked)
            continue;
        resumed.insert(*item.entryId);
        if (item.canRetry())
            m_manager.retry({*item.entryId, item.id}, project);
        // Still waiting for a project: nothing will happen by itself.
        const ShelfItem *const now = m_shelf.find(item.id);
        if (now && std::holds_alternative<ShelfItem::NeedsProject>(now->status))
            noteEnd({{*item.entryId, item.id},
                     item.fileURL().value_or(""),
                     "",
                     std::unexpected(now->statusText()),
                     true});
    }
    return resumed;
}

QUuid UploadRun::add(CaptureResult capture, const std::optional<std::string> &projectId) {
    const std::filesystem::path file = realPath(capture.fileURL);
    if (const UploadJournalEntry *const known = m_journal->findFile(file)) {
        const QUuid id = known->captureId;
        const auto card = std::ranges::find(m_shelf.items(), std::optional(id), &ShelfItem::entryId);
        if (card != m_shelf.items().end() && card->canRetry()) {
            m_ends.erase(id);
            m_manager.retry({id, card->id}, projectId);
        }
        return id;
    }
    const auto arrived = std::ranges::find_if(m_ends, [&file](const auto &each) {
        const UploadEnd &end = each.second.end;
        return end.file == file && end.assetId && end.stamp && FileStamp::of(file) == *end.stamp;
    });
    if (arrived != m_ends.end())
        return arrived->first;
    const auto shared = std::make_shared<const CaptureResult>(std::move(capture));
    return m_manager.enqueue(shared, projectId, m_shelf.add(shared));
}

Task<bool> UploadRun::finish(std::set<QUuid> entries, std::stop_token stop) {
    const auto haveEnded = [this, &entries] {
        return std::ranges::all_of(entries, [this](const QUuid &id) { return m_ends.contains(id); });
    };
    // An idle manager ends nothing more.
    while (!haveEnded() && !m_manager.isIdle() && !m_isInterrupted) {
        m_changed = OneShot<bool>();
        const OneShot<bool> changed = m_changed;
        if (!co_await changed.wait(stop))
            break;
    }
    // What the manager decided last is on disk before anybody is told.
    co_await m_journal->written(stop);
    co_return haveEnded();
}

const UploadEnd *UploadRun::endOf(const QUuid &entryId) const {
    const auto found = m_ends.find(entryId);
    return found == m_ends.end() ? nullptr : &found->second.end;
}

void UploadRun::noteEnd(const UploadEnd &end) {
    const double now = m_clock.hostNow();
    if (m_endsKept)
        std::erase_if(m_ends, [this, now](const auto &each) {
            return now - each.second.at > double(m_endsKept->count());
        });
    m_ends.insert_or_assign(end.ids.entryId, PastEnd{end, now});
    if (onEnd)
        onEnd(end);
    m_changed.resolve(true);
}

} // namespace vantrell
