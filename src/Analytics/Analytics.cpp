// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/Analytics.h"

#include "API/VantrellAPI.h"
#include "Capture/CaptureStorage.h"
#include "Support/Clock.h"
#include "Support/Log.h"
#include "Support/ScopeExit.h"
#include "Support/Settings.h"
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

constexpr std::size_t batchSize = 25;
constexpr int flushAt = 10;
constexpr auto flushInterval = 30s;

bool isValidName(std::string_view name) {
    constexpr std::string_view prefix = "cap.";
    const auto isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    };
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           std::ranges::all_of(name.substr(prefix.size()), isAllowed);
}

/// What waited of an earlier run goes when the user has opted out since.
std::filesystem::path prepared(std::filesystem::path file, bool isOff) {
    std::error_code ignored;
    if (isOff)
        std::filesystem::remove(file, ignored);
    return file;
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
        sharedQueue->queue.setOff(Settings(Settings::defaultFile()).boolean("usageEventsOff"));
        qAddPostRoutine([] { sharedQueue.reset(); });
    }
    return sharedQueue->queue;
}

Analytics::Analytics(std::filesystem::path file, Clock &clock)
    : m_clock(clock), m_off(isForbidden()), m_queue(prepared(std::move(file), m_off)) {}

bool Analytics::isForbidden() {
    const char *value = std::getenv("DO_NOT_TRACK");
    const std::string_view text = value ? value : "";
    return !text.empty() && text != "0" && text != "false";
}

void Analytics::setOff(bool off) {
    m_off = off || isForbidden();
    if (!m_off)
        return;
    std::set<std::string> all;
    for (const AnalyticsEvent &event : m_queue.events())
        all.insert(event.id);
    if (!all.empty())
        m_queue.remove(all);
}

void Analytics::track(const std::string &name, AnalyticsProps props) {
    if (!isValidName(name)) {
        qCCritical(logAnalytics, "dropping event with invalid name: %s", name.c_str());
        return;
    }
    if (m_off)
        return;
    const std::string id = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
    m_queue.add({id, name, std::move(props)});
    if (count() >= flushAt)
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
    if (m_off || !m_api || m_isFlushing)
        co_return;
    m_isFlushing = true;
    const ScopeExit clear([this] { m_isFlushing = false; });
    co_await m_queue.refresh(stop);
    while (!stop.stop_requested() && count() > 0 && co_await postBatch(stop)) {
    }
}

/// True when the batch is off the queue.
Task<bool> Analytics::postBatch(std::stop_token stop) {
    std::vector<AnalyticsEvent> batch = m_queue.events();
    batch.resize(std::min(batch.size(), batchSize));
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
    m_queue.remove(ids);
    co_return true;
}

} // namespace vantrell
