// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Shelf/ShelfItem.h"
#include "Support/Clock.h"
#include "Support/Observers.h"
#include "Support/TaskScope.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The cards of recent captures, oldest first. Only cards that reached `Done` leave by themselves, 6 s later;
/// never while the pointer is over the shelf, and then 3 s after it left. A card that is removed says nothing
/// about its upload, which goes on. Main thread.
///
/// Callbacks and observers may call back into the store, but not destroy it.
class ShelfStore {
public:
    explicit ShelfStore(Clock &clock) : m_clock(clock) {}
    ShelfStore(const ShelfStore &) = delete;
    ShelfStore &operator=(const ShelfStore &) = delete;

    const std::vector<ShelfItem> &items() const { return m_items; }
    /// Null when there is no such card. Valid until the next change.
    const ShelfItem *find(const QUuid &id) const;

    /// Calls `changed` after every change of `items`.
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

    /// A card for a capture that is still being finished.
    QUuid addProcessing(const std::string &name);
    /// A card for a finished capture that is about to be uploaded.
    QUuid add(std::shared_ptr<const CaptureResult> capture);
    /// A card for an upload that an earlier run of the program left.
    QUuid addRestored(const std::string &name, const std::filesystem::path &file,
                      std::optional<std::int64_t> durationMs, const QUuid &entryId, ShelfItem::Status status);

    // Unknown ids are ignored by all of these.

    /// The processed capture is there.
    void attach(std::shared_ptr<const CaptureResult> capture, const QUuid &id);
    void setEntry(const QUuid &id, const QUuid &entryId);
    void setNote(const QUuid &id, const std::string &note);
    void setRestoredPreview(const QUuid &id, const QImage &preview);
    void update(const QUuid &id, ShelfItem::Status status);
    void remove(const QUuid &id);

    /// The pointer came over the shelf or left it.
    void setHovering(bool hovering);

    /// The user's actions on a card; they only call back.
    void retry(const QUuid &id) const;
    void open(const QUuid &id) const;

    /// The shelf has something to show (true) or has become empty (false).
    std::function<void(bool)> onVisibilityChange;
    std::function<void(const ShelfItem &)> onRetry;
    std::function<void(const ShelfItem &)> onOpen;
    std::function<void(const ShelfItem &)> onItemDone;

    /// Id of the display on which the panel should appear; absent: the primary one.
    std::optional<std::string> preferredDisplay;

private:
    ShelfItem *findItem(const QUuid &id);
    QUuid append(ShelfItem item);
    void scheduleDismissal(const QUuid &id, std::chrono::seconds after);
    Task<> dismissLater(QUuid id, std::chrono::seconds after, std::stop_token stop);

    Clock &m_clock;
    std::vector<ShelfItem> m_items;
    Observers m_observers;
    std::set<QUuid> m_pausedDismissIds;
    bool m_hovering = false;
    /// One scope per timer, so that each can be cancelled alone.
    std::map<QUuid, std::unique_ptr<TaskScope>> m_dismissTasks;
};

} // namespace vantrell
