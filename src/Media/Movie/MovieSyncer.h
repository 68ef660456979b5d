// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieJournal.h"
#include "Support/PlatformError.h"
#include "Support/WorkerThread.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>

namespace vantrell {

/// Makes a growing movie and its journal durable on a thread of its own, at most once per interval and only
/// when something was written. Every method is thread-safe.
class MovieSyncer {
public:
    /// Movie and journal must outlive it. `failed` is called on its thread.
    MovieSyncer(const DiskFile &movie, MovieJournal &journal, std::filesystem::path folder,
                std::chrono::milliseconds interval, std::function<void(const PlatformError &)> failed);
    ~MovieSyncer() { stop(); }
    MovieSyncer(const MovieSyncer &) = delete;
    MovieSyncer &operator=(const MovieSyncer &) = delete;

    /// The movie's bytes before `end`, and the journal, were written.
    void written(std::uint64_t end);

    /// Waits for a synchronisation that is under way and starts no other.
    void stop();

private:
    void run();
    std::expected<void, PlatformError> synchronise(std::uint64_t end);

    const DiskFile &m_movie;
    MovieJournal &m_journal;
    const std::filesystem::path m_folder;
    const std::chrono::milliseconds m_interval;
    const std::function<void(const PlatformError &)> m_failed;
    // Its own thread's.
    bool m_folderSynced = false;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::uint64_t m_end = 0;
    bool m_dirty = false;
    bool m_isStopping = false;
    WorkerThread m_thread;
};

} // namespace vantrell
