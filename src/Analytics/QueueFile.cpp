// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/QueueFile.h"

#include "Support/AtomicFile.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <mutex>
#include <optional>

namespace vantrell {

/// Shared with the worker, which may outlive the object.
struct QueueFile::State {
    explicit State(std::filesystem::path p) : path(std::move(p)) {}

    const std::filesystem::path path;
    /// Held while writing, so that older contents never come after newer ones.
    std::mutex writing;
    std::mutex mutex;
    std::optional<std::string> pending;

    /// True when nobody has been sent for what was pending before.
    bool put(std::string contents) {
        std::scoped_lock lock(mutex);
        const bool first = !pending;
        pending = std::move(contents);
        return first;
    }

    std::optional<std::string> take() {
        std::scoped_lock lock(mutex);
        return std::exchange(pending, std::nullopt);
    }

    void write() {
        std::scoped_lock lock(writing);
        const auto contents = take();
        if (!contents)
            return;
        if (const auto written = writeFileAtomically(path, *contents); !written)
            qCCritical(logAnalytics, "analytics queue write failed: %s", written.error().message.c_str());
    }
};

QueueFile::QueueFile(std::filesystem::path path) : m_state(std::make_shared<State>(std::move(path))) {}

QueueFile::~QueueFile() {
    m_state->write();
}

void QueueFile::replace(std::string contents) {
    if (m_state->put(std::move(contents)))
        postToWorker([state = m_state] { state->write(); });
}

} // namespace vantrell
