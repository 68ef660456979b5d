// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/QueueFile.h"

#include "Support/AtomicFile.h"
#include "Support/BlockingWork.h"
#include "Support/FileLock.h"
#include "Support/Log.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <optional>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr std::size_t capacity = 200;
constexpr auto lockPatience = 2s;

using Events = std::vector<AnalyticsEvent>;

std::expected<Events, JsonError> decodeEvents(const std::string &text) {
    const auto json = parseJson(text);
    if (!json)
        return std::unexpected(json.error());
    if (!json->is_array())
        return std::unexpected(JsonError{"the document is no array"});
    Events events;
    for (const nlohmann::json &entry : *json) {
        auto event = AnalyticsEvent::decode(entry);
        if (!event)
            return std::unexpected(event.error());
        events.push_back(std::move(*event));
    }
    return events;
}

bool contains(const Events &events, const std::string &id) {
    return std::ranges::find(events, id, &AnalyticsEvent::id) != events.end();
}

/// What one process did to the queue, apart from what others did.
struct Changes {
    Events added;
    std::set<std::string> removed;

    bool isEmpty() const { return added.empty() && removed.empty(); }

    Events appliedTo(Events events) const {
        std::erase_if(events, [this](const AnalyticsEvent &event) { return removed.contains(event.id); });
        for (const AnalyticsEvent &event : added) {
            if (!contains(events, event.id))
                events.push_back(event);
        }
        if (events.size() > capacity)
            events.erase(events.begin(), events.end() - capacity);
        return events;
    }

    void remove(const std::string &id) {
        std::erase_if(added, [&id](const AnalyticsEvent &event) { return event.id == id; });
        removed.insert(id);
    }

    /// These are on disk now.
    void subtract(const Changes &done) {
        std::erase_if(added, [&done](const AnalyticsEvent &event) { return contains(done.added, event.id); });
        std::erase_if(removed, [&done](const std::string &id) { return done.removed.contains(id); });
    }
};

} // namespace

std::string encodeEvents(const Events &events) {
    nlohmann::json array = nlohmann::json::array();
    for (const AnalyticsEvent &event : events)
        array.push_back(event.encode());
    return array.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// Shared with the worker, which may outlive the object.
struct QueueFile::State {
    explicit State(std::filesystem::path p) : path(std::move(p)) {}

    const std::filesystem::path path;
    /// Held while the file is read and written, so that what was read is not older than what is known.
    std::mutex filing;
    /// Guards the rest.
    std::mutex mutex;
    Events onDisk;
    /// Not on disk yet.
    Changes changes;
    /// A worker has been sent for.
    bool isSent = false;

    Events all() {
        std::scoped_lock lock(mutex);
        return changes.appliedTo(onDisk);
    }

    void load() {
        const auto text = readFile(path);
        if (!text)
            return;
        auto events = decodeEvents(*text);
        if (events)
            onDisk = std::move(*events);
        else
            qCCritical(logAnalytics, "analytics queue unreadable, starting fresh: %s",
                       events.error().message.c_str());
    }

    /// What the file holds now; nothing when it must be written anew. A file that was taken away took its
    /// events along.
    std::optional<Events> read() const {
        const auto text = readFile(path);
        if (!text)
            return text.error().code == ENOENT ? std::optional(Events()) : std::nullopt;
        auto events = decodeEvents(*text);
        return events ? std::optional(std::move(*events)) : std::nullopt;
    }

    void merge() {
        std::scoped_lock one(filing);
        std::unique_lock lock(mutex);
        isSent = false;
        const Changes doing = changes;
        const Events known = onDisk;
        lock.unlock();
        auto written = write(doing, known);
        lock.lock();
        if (!written) {
            qCCritical(logAnalytics, "analytics queue write failed: %s", written.error().message.c_str());
            return;
        }
        onDisk = std::move(*written);
        changes.subtract(doing);
    }

    std::expected<Events, PlatformError> write(const Changes &doing, const Events &known) const {
        std::optional<FileLock> held;
        if (!doing.isEmpty()) {
            auto lock = FileLock::acquire(path, lockPatience);
            if (!lock && lock.error().isHeldElsewhere)
                return std::unexpected(lock.error().cause);
            // Where nothing can be locked at all the write itself tells what is wrong, if anything is.
            if (lock)
                held = std::move(*lock);
        }
        const auto found = read();
        Events merged = doing.appliedTo(found.value_or(known));
        if (doing.isEmpty() || merged == found)
            return merged;
        if (const auto done = writeFileAtomically(path, encodeEvents(merged)); !done)
            return std::unexpected(done.error());
        return merged;
    }
};

QueueFile::QueueFile(std::filesystem::path path) : m_state(std::make_shared<State>(std::move(path))) {
    m_state->load();
}

QueueFile::~QueueFile() {
    std::unique_lock lock(m_state->mutex);
    const bool isWritten = m_state->changes.isEmpty();
    lock.unlock();
    if (!isWritten)
        m_state->merge();
}

std::vector<AnalyticsEvent> QueueFile::events() const {
    return m_state->all();
}

void QueueFile::add(AnalyticsEvent event) {
    std::unique_lock lock(m_state->mutex);
    Events &added = m_state->changes.added;
    added.push_back(std::move(event));
    if (added.size() > capacity)
        added.erase(added.begin());
    lock.unlock();
    mergeSoon();
}

void QueueFile::remove(const std::set<std::string> &ids) {
    std::unique_lock lock(m_state->mutex);
    for (const std::string &id : ids)
        m_state->changes.remove(id);
    lock.unlock();
    mergeSoon();
}

void QueueFile::mergeSoon() {
    std::unique_lock lock(m_state->mutex);
    if (std::exchange(m_state->isSent, true))
        return;
    lock.unlock();
    postToWorker([state = m_state] { state->merge(); });
}

Task<> QueueFile::refresh(std::stop_token stop) {
    const auto work = [state = m_state] {
        state->merge();
        return true;
    };
    co_await runBlocking(work, stop);
}

} // namespace vantrell
