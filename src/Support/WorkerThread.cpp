// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/WorkerThread.h"

#include <utility>

#include <pthread.h>

namespace vantrell {

WorkerThread::WorkerThread(const char *name, std::function<void()> work)
    : m_thread([name, work = std::move(work)] {
          ::pthread_setname_np(::pthread_self(), name);
          work();
      }) {}

WorkerThread &WorkerThread::operator=(WorkerThread &&other) {
    join();
    m_thread = std::move(other.m_thread);
    return *this;
}

void WorkerThread::join() {
    if (m_thread.joinable())
        m_thread.join();
}

} // namespace vantrell
