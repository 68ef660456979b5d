// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Analytics/AnalyticsEvent.h"
#include "Analytics/QueueFile.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <filesystem>
#include <stop_token>
#include <string>

namespace vantrell {

class Clock;
class VantrellAPI;

/// The queue of usage events: kept on disk over restarts, posted to the service in batches every 30 s and
/// whenever 10 events wait. Processes that run side by side share it. Nothing of it is ever shown to the
/// user, except how many events wait. Main thread.
///
/// The user switches it off with the environment variable DO_NOT_TRACK or in the capture bar's options: then
/// nothing is recorded or sent, and what waited on disk is removed.
class Analytics {
public:
    /// The process's own queue, made on first use. It ends with the application object.
    static Analytics &shared();

    /// Reads the queue in `file`; `clock` outlives the object.
    Analytics(std::filesystem::path file, Clock &clock);
    Analytics(const Analytics &) = delete;
    Analytics &operator=(const Analytics &) = delete;

    /// Records an event. A name that does not match "^cap\.[a-z0-9_]+$" is dropped with a log line; beyond
    /// 200 events the oldest go.
    void track(const std::string &name, AnalyticsProps props = {});

    /// Posts from now on, the first time in 30 s. `api` outlives the object or is ended with `stop`.
    void start(VantrellAPI &api);
    /// Ends posting; events go on to be recorded.
    void stop();

    /// How many events wait.
    int count() const { return int(m_queue.events().size()); }
    bool isOff() const { return m_off; }
    /// The user's choice. It cannot switch on what the environment forbids.
    void setOff(bool off);
    /// DO_NOT_TRACK is set.
    static bool isForbidden();

private:
    Task<> flushPeriodically(std::stop_token stop);
    Task<> flush(std::stop_token stop);
    Task<bool> postBatch(std::stop_token stop);

    Clock &m_clock;
    bool m_off;
    QueueFile m_queue;
    VantrellAPI *m_api = nullptr;
    bool m_isFlushing = false;
    TaskScope m_timerTask;
    TaskScope m_scope;
};

} // namespace vantrell
