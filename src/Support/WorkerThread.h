// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <functional>
#include <thread>

namespace vantrell {

/// A named thread of one owner, joined at its end. What makes it end is the owner's: a flag `m_isStopping`
/// under the mutex that the thread waits with, or a queue that is closed. Declare it as the owner's last
/// member, or join it first in the destructor: what it works on is then still there. One thread at a time.
class WorkerThread {
public:
    /// None is running.
    WorkerThread() = default;
    /// `name` is what debuggers and process viewers show, at most 15 characters.
    WorkerThread(const char *name, std::function<void()> work);
    ~WorkerThread() { join(); }
    WorkerThread(WorkerThread &&) = default;
    /// Joins the thread that is replaced.
    WorkerThread &operator=(WorkerThread &&other);

    /// It was started and not joined yet.
    bool isRunning() const { return m_thread.joinable(); }
    /// Waits for its end; does nothing when none is running.
    void join();

private:
    std::thread m_thread;
};

} // namespace vantrell
