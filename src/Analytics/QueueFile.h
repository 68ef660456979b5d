// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Analytics/AnalyticsEvent.h"
#include "Support/Task.h"

#include <filesystem>
#include <memory>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The queue of events in a file that all processes of the user share. Each writes only what it changed: a
/// worker thread locks the file, reads what the others left there, adds and removes, and writes it back. What
/// the disk refused is tried again with the next change. Main thread. Failures are logged.
class QueueFile {
public:
    /// Reads the file; none there is an empty queue, and so is one that cannot be read. Blocks on the disk.
    explicit QueueFile(std::filesystem::path path);
    /// Writes what is not on disk yet; blocks for at most 2 s while another process holds the file.
    ~QueueFile();
    QueueFile(const QueueFile &) = delete;
    QueueFile &operator=(const QueueFile &) = delete;

    /// As last seen on disk, with this process's changes; oldest first.
    std::vector<AnalyticsEvent> events() const;

    /// Beyond 200 events the oldest go.
    void add(AnalyticsEvent event);
    void remove(const std::set<std::string> &ids);

    /// Brings in what the other processes did meanwhile.
    Task<> refresh(std::stop_token stop);

private:
    struct State;

    void mergeSoon();

    const std::shared_ptr<State> m_state;
};

/// The queue as a JSON array; text that is no UTF-8 is mended rather than refused.
std::string encodeEvents(const std::vector<AnalyticsEvent> &events);

} // namespace vantrell
