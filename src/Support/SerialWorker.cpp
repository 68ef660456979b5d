// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/SerialWorker.h"

namespace vantrell {

SerialWorker::~SerialWorker() {
    {
        std::scoped_lock lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
}

void SerialWorker::post(std::function<void()> work) {
    {
        std::scoped_lock lock(m_mutex);
        m_waiting.push_back(std::move(work));
        if (!m_thread.isRunning())
            m_thread = WorkerThread("serial worker", [this] { run(); });
    }
    m_changed.notify_one();
}

void SerialWorker::run() {
    for (;;) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isStopping || !m_waiting.empty(); });
        if (m_waiting.empty())
            return;
        const std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        work();
    }
}

} // namespace vantrell
