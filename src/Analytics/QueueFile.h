// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace vantrell {

/// A small file that is rewritten often: a worker thread writes, and what was overtaken by newer contents is
/// not written at all. Main thread. Failures are logged.
class QueueFile {
public:
    explicit QueueFile(std::filesystem::path path);
    /// Writes what is not on disk yet.
    ~QueueFile();
    QueueFile(const QueueFile &) = delete;
    QueueFile &operator=(const QueueFile &) = delete;

    /// Replaces the contents soon.
    void replace(std::string contents);

private:
    struct State;

    const std::shared_ptr<State> m_state;
};

} // namespace vantrell
