// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieSyncer.h"

namespace vantrell {

MovieSyncer::MovieSyncer(const DiskFile &movie, MovieJournal &journal, std::filesystem::path folder,
                         std::chrono::milliseconds interval,
                         std::function<void(const PlatformError &)> failed)
    : m_movie(movie), m_journal(journal), m_folder(std::move(folder)), m_interval(interval),
      m_failed(std::move(failed)), m_thread("movie syncer", [this] { run(); }) {}

void MovieSyncer::written(std::uint64_t end) {
    {
        std::scoped_lock lock(m_mutex);
        m_end = end;
        m_dirty = true;
    }
    m_wake.notify_one();
}

void MovieSyncer::stop() {
    {
        std::scoped_lock lock(m_mutex);
        m_isStopping = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void MovieSyncer::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_dirty || m_isStopping; });
        if (m_isStopping)
            return;
        m_dirty = false;
        const std::uint64_t end = m_end;
        lock.unlock();
        if (const auto done = synchronise(end); !done)
            m_failed(done.error());
        lock.lock();
        m_wake.wait_for(lock, m_interval, [this] { return m_isStopping; });
    }
}

std::expected<void, PlatformError> MovieSyncer::synchronise(std::uint64_t end) {
    if (!m_folderSynced) {
        if (const auto done = syncFolder(m_folder); !done)
            return done;
        m_folderSynced = true;
    }
    if (const auto done = m_movie.syncData(); !done)
        return done;
    if (const auto done = m_journal.noteSynced(end); !done)
        return done;
    return m_journal.file().syncData();
}

} // namespace vantrell
