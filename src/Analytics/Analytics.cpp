// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/Analytics.h"

#include "API/VantrellAPI.h"
#include "Capture/CaptureStorage.h"
#include "Support/AtomicFile.h"
#include "Support/Clock.h"
#include "Support/Log.h"
#include "Support/ScopeExit.h"
#include "Support/SystemClock.h"

#include <QCoreApplication>
#include <QUuid>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <set>
#include <string_view>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr std::size_t capacity = 200;
constexpr std::size_t batchSize = 25;
constexpr std::size_t flushAt = 10;
constexpr auto flushInterval = 30s;

bool isValidName(std::string_view name) {
    constexpr std::string_view prefix = "cap.";
    const auto isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    };
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           std::ranges::all_of(name.substr(prefix.size()), isAllowed);
}

bool userOptedOut() {
    const char *value = std::getenv("DO_NOT_TRACK");
    const std::string_view text = value ? value : "";
    return !text.empty() && text != "0" && text != "false";
}

/// Text that is no UTF-8 is mended rather than refused.
std::string encodeEvents(const std::vector<AnalyticsEvent> &events) {
    nlohmann::json array = nlohmann::json::array();
    for (const AnalyticsEvent &event : events)
        array.push_back(event.encode());
    return array.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::expected<std::vector<AnalyticsEvent>, JsonError> decodeEvents(const std::string &text) {
    const auto json = parseJson(text);
    if (!json)
        return std::unexpected(json.error());
    if (!json->is_array())
        return std::unexpected(JsonError{"the document is no array"});
    std::vector<AnalyticsEvent> events;
    for (const nlohmann::json &entry : *json) {
        auto event = AnalyticsEvent::decode(entry);
        if (!event)
            return std::unexpected(event.error());
        events.push_back(std::move(*event));
    }
    return events;
}

struct Shared {
    SystemClock clock;
    Analytics queue{CaptureStorage::analyticsQueueURL(), clock};
};
std::unique_ptr<Shared> sharedQueue;

} // namespace

Analytics &Analytics::shared() {
    if (!sharedQueue) {
        sharedQueue = std::make_unique<Shared>();
        qAddPostRoutine([] { sharedQueue.reset(); });
    }
    return sharedQueue->queue;
}

Analytics::Analytics(std::filesystem::path file, Clock &clock)
    : m_path(file), m_clock(clock), m_off(userOptedOut()), m_file(std::move(file)) {
    if (m_off) {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    } else {
        load();
    }
}

void Analytics::track(const std::string &name, AnalyticsProps props) {
    if (!isValidName(name)) {
        qCCritical(logAnalytics, "dropping event with invalid name: %s", name.c_str());
        return;
    }
    if (m_off)
        return;
    const std::string id = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
    m_events.push_back({id, name, std::move(props)});
    if (m_events.size() > capacity)
        m_events.erase(m_events.begin(), m_events.end() - capacity);
    save();
    if (m_events.size() >= flushAt)
        m_scope.start(this, &Analytics::flush);
}

void Analytics::start(VantrellAPI &api) {
    m_api = &api;
    m_timerTask.cancel();
    m_timerTask.start(this, &Analytics::flushPeriodically);
}

void Analytics::stop() {
    m_timerTask.cancel();
    m_scope.cancel();
    m_api = nullptr;
}

Task<> Analytics::flushPeriodically(std::stop_token stop) {
    while (co_await m_clock.sleep(flushInterval, stop))
        co_await flush(stop);
}

Task<> Analytics::flush(std::stop_token stop) {
    if (!m_api || m_isFlushing || m_events.empty())
        co_return;
    m_isFlushing = true;
    const ScopeExit clear([this] { m_isFlushing = false; });
    while (!m_events.empty() && co_await postBatch(stop)) {
    }
}

/// True when the batch is off the queue.
Task<bool> Analytics::postBatch(std::stop_token stop) {
    const std::size_t size = std::min(m_events.size(), batchSize);
    const std::vector<AnalyticsEvent> batch(m_events.begin(), m_events.begin() + std::ptrdiff_t(size));
    const auto posted = co_await m_api->postEvents(encodeEvents(batch), stop);
    if (stop.stop_requested())
        co_return false;
    if (!posted) {
        const APIError &error = posted.error();
        const auto *http = error.as<APIError::Http>();
        const bool isRefused = http && http->status >= 400 && http->status <= 499;
        if (!isRefused) {
            if (!error.as<APIError::NotPaired>())
                qCInfo(logAnalytics, "analytics flush deferred: %s", error.logText().c_str());
            co_return false;
        }
        qCCritical(logAnalytics, "server dropped analytics batch (%d)", http->status);
    }
    std::set<std::string> ids;
    for (const AnalyticsEvent &event : batch)
        ids.insert(event.id);
    std::erase_if(m_events, [&ids](const AnalyticsEvent &event) { return ids.contains(event.id); });
    save();
    co_return true;
}

void Analytics::load() {
    const auto text = readFile(m_path);
    if (!text)
        return;
    auto events = decodeEvents(*text);
    if (events)
        m_events = std::move(*events);
    else
        qCCritical(logAnalytics, "analytics queue unreadable, starting fresh: %s",
                   events.error().message.c_str());
}

void Analytics::save() {
    m_file.replace(encodeEvents(m_events));
}

} // namespace vantrell
