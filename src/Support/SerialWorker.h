// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/WorkerThread.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace vantrell {

/// A thread of one owner for blocking work that is done in order, started with the first piece. Thread-safe.
class SerialWorker {
public:
    SerialWorker() = default;
    /// Waits for all that was posted: make it end first.
    ~SerialWorker();
    SerialWorker(const SerialWorker &) = delete;
    SerialWorker &operator=(const SerialWorker &) = delete;

    void post(std::function<void()> work);

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_waiting;
    bool m_isStopping = false;
    WorkerThread m_thread;
};

} // namespace vantrell
