// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/X264Instance.h"
#include "Support/WorkerThread.h"

#include <atomic>
#include <memory>

namespace vantrell {

/// An encoder that is made ready on a thread of its own, while another one is busy. Thread-bound.
class PreparedX264 {
public:
    explicit PreparedX264(const X264Instance::Options &options)
        : m_thread("encoder warm-up", [this, options] {
              m_instance = X264Instance::open(options);
              if (m_instance)
                  m_instance->warmUp(2);
              m_isReady = true;
          }) {}

    bool isReady() const { return m_isReady; }
    /// Waits for it; null when it could not be opened.
    std::unique_ptr<X264Instance> take() {
        m_thread.join();
        return std::move(m_instance);
    }

private:
    std::atomic<bool> m_isReady = false;
    std::unique_ptr<X264Instance> m_instance;
    WorkerThread m_thread;
};

} // namespace vantrell
