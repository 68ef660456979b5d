// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Shelf/ShelfStore.h"

#include <algorithm>

namespace vantrell {

namespace {

constexpr std::chrono::seconds doneGrace(6);
/// Whoever looked at the shelf has seen the card.
constexpr std::chrono::seconds graceAfterHover(3);

} // namespace

const ShelfItem *ShelfStore::find(const QUuid &id) const {
    const auto found = std::ranges::find(m_items, id, &ShelfItem::id);
    return found == m_items.end() ? nullptr : &*found;
}

ShelfItem *ShelfStore::findItem(const QUuid &id) {
    return const_cast<ShelfItem *>(std::as_const(*this).find(id));
}

QUuid ShelfStore::append(ShelfItem item) {
    const QUuid id = item.id = QUuid::createUuid();
    m_items.push_back(std::move(item));
    m_observers.notify();
    if (onVisibilityChange)
        onVisibilityChange(true);
    return id;
}

QUuid ShelfStore::addProcessing(const std::string &name) {
    return append({.status = ShelfItem::Processing{}, .placeholderName = name});
}

QUuid ShelfStore::add(std::shared_ptr<const CaptureResult> capture) {
    return append({.capture = std::move(capture),
                   .status = ShelfItem::Uploading{},
                   .placeholderName = "Screen recording"});
}

QUuid ShelfStore::addRestored(const std::string &name, const std::filesystem::path &file,
                              std::optional<std::int64_t> durationMs, const QUuid &entryId,
                              ShelfItem::Status status) {
    return append({.entryId = entryId,
                   .status = std::move(status),
                   .placeholderName = name,
                   .restoredFileURL = file,
                   .restoredDurationMs = durationMs});
}

void ShelfStore::attach(std::shared_ptr<const CaptureResult> capture, const QUuid &id) {
    ShelfItem *const item = findItem(id);
    if (!item)
        return;
    item->capture = std::move(capture);
    update(id, ShelfItem::Uploading{});
}

void ShelfStore::setEntry(const QUuid &id, const QUuid &entryId) {
    if (ShelfItem *const item = findItem(id)) {
        item->entryId = entryId;
        m_observers.notify();
    }
}

void ShelfStore::setNote(const QUuid &id, const std::string &note) {
    if (ShelfItem *const item = findItem(id)) {
        item->note = note;
        m_observers.notify();
    }
}

void ShelfStore::setRestoredPreview(const QUuid &id, const QImage &preview) {
    if (ShelfItem *const item = findItem(id)) {
        item->restoredPreview = preview;
        m_observers.notify();
    }
}

void ShelfStore::update(const QUuid &id, ShelfItem::Status status) {
    ShelfItem *const item = findItem(id);
    if (!item)
        return;
    item->status = std::move(status);
    const std::optional<ShelfItem> done = item->isDone() ? std::optional(*item) : std::nullopt;
    m_observers.notify();
    if (!done) {
        m_dismissTasks.erase(id);
        m_pausedDismissIds.erase(id);
        return;
    }
    if (onItemDone)
        onItemDone(*done);
    if (find(id))
        scheduleDismissal(id, doneGrace);
}

void ShelfStore::remove(const QUuid &id) {
    m_dismissTasks.erase(id);
    m_pausedDismissIds.erase(id);
    if (std::erase_if(m_items, [&id](const ShelfItem &item) { return item.id == id; }) == 0)
        return;
    m_observers.notify();
    if (m_items.empty() && onVisibilityChange)
        onVisibilityChange(false);
}

void ShelfStore::setHovering(bool hovering) {
    m_hovering = hovering;
    if (hovering) {
        for (const auto &[id, timer] : m_dismissTasks)
            m_pausedDismissIds.insert(id);
        m_dismissTasks.clear();
        return;
    }
    for (const QUuid &id : std::exchange(m_pausedDismissIds, {}))
        scheduleDismissal(id, graceAfterHover);
}

void ShelfStore::retry(const QUuid &id) const {
    if (const ShelfItem *const item = find(id); item && onRetry)
        onRetry(ShelfItem(*item));
}

void ShelfStore::open(const QUuid &id) const {
    if (const ShelfItem *const item = find(id); item && onOpen)
        onOpen(ShelfItem(*item));
}

void ShelfStore::scheduleDismissal(const QUuid &id, std::chrono::seconds after) {
    if (m_hovering) {
        m_pausedDismissIds.insert(id);
        return;
    }
    std::unique_ptr<TaskScope> &timer = m_dismissTasks[id];
    timer = std::make_unique<TaskScope>();
    timer->start(this, &ShelfStore::dismissLater, id, after);
}

Task<> ShelfStore::dismissLater(QUuid id, std::chrono::seconds after, std::stop_token stop) {
    if (co_await m_clock.sleep(after, stop))
        remove(id);
}

} // namespace vantrell
