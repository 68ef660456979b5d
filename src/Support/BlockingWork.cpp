// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/BlockingWork.h"

#include <QThreadPool>

#include <deque>
#include <mutex>

namespace vantrell {

namespace {

/// The work crosses to the pool's threads here and not inside Qt, whose own locking the thread sanitizer does
/// not see.
class Handover {
public:
    void put(std::function<void()> work) {
        std::scoped_lock lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }

    std::function<void()> take() {
        std::scoped_lock lock(m_mutex);
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        return work;
    }

private:
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_waiting;
};

Handover &handover() {
    // Never destroyed: the pool may still be working while the process ends.
    static auto *const instance = new Handover;
    return *instance;
}

} // namespace

void postToWorker(std::function<void()> work) {
    handover().put(std::move(work));
    QThreadPool::globalInstance()->start([] { handover().take()(); });
}

} // namespace vantrell
