// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieWriter.h"

#include "Media/Movie/MovieAssembler.h"
#include "Media/Movie/MovieError.h"
#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieSyncer.h"
#include "Support/DiskReserve.h"
#include "Support/Log.h"
#include "Support/WorkerThread.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include <unistd.h>

namespace vantrell {

namespace {

constexpr std::uint64_t finalisationSlack = std::uint64_t(128) << 10;
constexpr std::size_t usualChunkBytes = std::size_t(4) << 20;
constexpr std::chrono::seconds elapsedInterval{1};

} // namespace

struct MovieWriter::Implementation {
    // Samples of one track that wait for the disk: the next chunk.
    struct Pending {
        std::vector<std::uint8_t> data;
        std::vector<SampleEntry> samples;

        void clear() {
            samples.clear();
            // The buffer is used again; after the disk stalled it may have grown far beyond what is usual.
            if (data.capacity() > usualChunkBytes)
                data = {};
            data.clear();
        }
    };

    Implementation(const std::filesystem::path &moviePath, Options writerOptions, MovieAssembler assembled,
                   MovieJournal log)
        : path(moviePath), options(std::move(writerOptions)), assembler(std::move(assembled)),
          journal(std::move(log)), reserve(moviePath.parent_path().empty() ? "." : moviePath.parent_path()),
          syncer(assembler.file(), journal, moviePath.parent_path(), options.syncInterval,
                 [this](const PlatformError &failure) { fail(failure); }),
          thread("movie writer", [this] { run(); }) {}

    void run();
    void waitForWork(std::unique_lock<std::mutex> &lock);
    void flush(std::unique_lock<std::mutex> &lock);
    std::expected<void, PlatformError> store(const std::vector<TrackDescription> &tracks);
    std::expected<void, PlatformError> storeChunks();
    void storeWhatFailed();
    void noteElapsedWhenDue();
    void fail(const PlatformError &failure);
    void stopThreads();
    TrackId addTrack(TrackDescription description);

    const std::filesystem::path path;
    const Options options;

    // Writing thread's, and the finishing thread's once that has ended.
    MovieAssembler assembler;
    MovieJournal journal;
    DiskReserve reserve;
    std::vector<Pending> writing;
    std::chrono::steady_clock::time_point nextElapsedNote = std::chrono::steady_clock::now();

    mutable std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable room;
    std::vector<Pending> pending;
    std::vector<TrackDescription> newTracks;
    std::size_t pendingBytes = 0;
    std::uint64_t writtenBytes = MovieAssembler::headBytes;
    std::uint64_t headerBytes = 0;
    std::optional<PlatformError> error;
    bool isStopping = false;

    MovieSyncer syncer;
    WorkerThread thread;
};

void MovieWriter::Implementation::run() {
    std::unique_lock lock(mutex);
    for (;;) {
        waitForWork(lock);
        // Samples may come while the disk is written to; only a flush that begins after the stop is the last.
        const bool isLast = isStopping;
        flush(lock);
        if (error) {
            // What the movie holds stays as long as it was when it stopped growing.
            wake.wait(lock, [this] { return isStopping; });
            return;
        }
        lock.unlock();
        if (isLast)
            nextElapsedNote = {};
        noteElapsedWhenDue();
        if (isLast)
            return;
        lock.lock();
    }
}

void MovieWriter::Implementation::waitForWork(std::unique_lock<std::mutex> &lock) {
    const auto hasWork = [this] { return isStopping || pendingBytes > 0; };
    if (options.elapsed)
        wake.wait_until(lock, nextElapsedNote, hasWork);
    else
        wake.wait(lock, hasWork);
    // Let a chunk grow: few large writes instead of one for each sample, and small tables.
    if (pendingBytes > 0)
        wake.wait_for(lock, options.flushInterval,
                      [this] { return isStopping || pendingBytes > options.bufferLimit / 4; });
}

void MovieWriter::Implementation::flush(std::unique_lock<std::mutex> &lock) {
    writing.resize(pending.size());
    std::swap(writing, pending);
    const std::size_t taken = pendingBytes;
    const std::vector<TrackDescription> tracks = std::exchange(newTracks, {});
    lock.unlock();

    if (taken > 0 || !tracks.empty())
        if (const auto stored = store(tracks); !stored)
            fail(stored.error());
    const std::uint64_t header = assembler.headerBytes() + finalisationSlack;

    lock.lock();
    pendingBytes -= taken;
    writtenBytes = assembler.end();
    headerBytes = header;
    room.notify_all();
}

std::expected<void, PlatformError>
MovieWriter::Implementation::store(const std::vector<TrackDescription> &tracks) {
    for (const TrackDescription &track : tracks)
        assembler.addTrack(track);
    for (const TrackDescription &track : tracks)
        if (const auto added = journal.addTrack(track); !added)
            return added;
    if (const auto stored = storeChunks(); !stored)
        return stored;
    syncer.written(assembler.end());
    return reserve.hold(assembler.headerBytes() + finalisationSlack);
}

std::expected<void, PlatformError> MovieWriter::Implementation::storeChunks() {
    for (std::uint32_t track = 0; track < writing.size(); ++track) {
        Pending &chunk = writing[track];
        if (chunk.samples.empty())
            continue;
        const auto offset = assembler.writeChunk(track, chunk.data, chunk.samples);
        if (!offset)
            return std::unexpected(offset.error());
        const auto added = journal.addChunk(track, *offset, chunk.data, chunk.samples);
        chunk.clear();
        if (!added)
            return added;
    }
    return {};
}

void MovieWriter::Implementation::storeWhatFailed() {
    // On a full disk the room that is left belongs to the finishing.
    if (!error || isDiskFull(*error))
        return;
    for (const TrackDescription &track : std::exchange(newTracks, {}))
        assembler.addTrack(track);
    // A round may end at the journal, which the finished movie does not need.
    for (auto *waiting : {&writing, &pending}) {
        if (waiting == &pending)
            std::swap(writing, pending);
        for (std::size_t round = 0; round <= writing.size(); ++round)
            if (storeChunks())
                break;
        if (std::ranges::any_of(writing, [](const Pending &chunk) { return !chunk.samples.empty(); }))
            return;
    }
    qCInfo(logCapture, "movie is whole in spite of the failure");
}

void MovieWriter::Implementation::noteElapsedWhenDue() {
    const auto now = std::chrono::steady_clock::now();
    if (!options.elapsed || now < nextElapsedNote)
        return;
    nextElapsedNote = now + elapsedInterval;
    if (const auto noted = journal.noteElapsed(options.elapsed()); !noted)
        fail(noted.error());
    syncer.written(assembler.end());
}

void MovieWriter::Implementation::fail(const PlatformError &failure) {
    {
        std::scoped_lock lock(mutex);
        if (error)
            return;
        error = failure;
    }
    qCCritical(logCapture, "movie cannot grow: %s", failure.message.c_str());
    room.notify_all();
}

void MovieWriter::Implementation::stopThreads() {
    {
        std::scoped_lock lock(mutex);
        isStopping = true;
    }
    wake.notify_all();
    room.notify_all();
    thread.join();
    syncer.stop();
}

TrackId MovieWriter::Implementation::addTrack(TrackDescription description) {
    std::scoped_lock lock(mutex);
    newTracks.push_back(std::move(description));
    pending.emplace_back();
    return TrackId{int(pending.size()) - 1};
}

std::expected<std::unique_ptr<MovieWriter>, PlatformError>
MovieWriter::create(const std::filesystem::path &path, Options options) {
    auto file = DiskFile::create(path);
    if (!file)
        return std::unexpected(file.error());
    auto journal = MovieJournal::create(path);
    auto assembler = journal ? MovieAssembler::begin(std::move(*file)) : std::unexpected(journal.error());
    if (!assembler) {
        // Nothing was recorded yet: nothing may stay.
        ::unlink(path.c_str());
        if (journal)
            ::unlink(MovieJournal::pathFor(path).c_str());
        return std::unexpected(assembler.error());
    }
    return std::unique_ptr<MovieWriter>(new MovieWriter(std::make_unique<Implementation>(
        path, std::move(options), std::move(*assembler), std::move(*journal))));
}

MovieWriter::MovieWriter(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}

MovieWriter::~MovieWriter() {
    m_implementation->stopThreads();
}

TrackId MovieWriter::addVideoTrack(const VideoTrackFormat &format) {
    return m_implementation->addTrack(describeTrack(format));
}

TrackId MovieWriter::addAudioTrack(const AudioTrackFormat &format) {
    return m_implementation->addTrack(describeTrack(format));
}

std::expected<void, PlatformError> MovieWriter::append(TrackId track, const EncodedSample &sample) {
    Implementation &self = *m_implementation;
    std::unique_lock lock(self.mutex);
    self.room.wait(lock, [&self] {
        return self.pendingBytes < self.options.bufferLimit || self.error || self.isStopping;
    });
    if (self.error)
        return std::unexpected(*self.error);
    if (self.isStopping)
        return std::unexpected(movieError(MovieFault::finished, "the movie is finished"));
    auto &[data, samples] = self.pending[std::size_t(track.index)];
    data.insert(data.end(), sample.data.begin(), sample.data.end());
    samples.push_back(
        {std::uint32_t(sample.data.size()), sample.isKey, sample.dts, std::int32_t(sample.pts - sample.dts)});
    const std::size_t before = self.pendingBytes;
    self.pendingBytes += sample.data.size();
    const std::size_t urgent = self.options.bufferLimit / 4;
    const bool notify = before == 0 || (before <= urgent && self.pendingBytes > urgent);
    lock.unlock();
    if (notify)
        self.wake.notify_one();
    return {};
}

std::expected<MovieSummary, PlatformError> MovieWriter::finish(std::span<const TrackEnd> ends) {
    Implementation &self = *m_implementation;
    self.stopThreads();
    self.storeWhatFailed();
    std::vector<std::optional<std::int64_t>> trackEnds(self.assembler.trackCount());
    for (const TrackEnd &end : ends)
        if (std::size_t(end.track.index) < trackEnds.size())
            trackEnds[std::size_t(end.track.index)] = end.end;
    // Interrupted from here on, the movie is still finished with these ends; without room it is not noted.
    if (const auto noted = self.journal.addEnds(trackEnds); !noted)
        qCWarning(logCapture, "movie's end not noted: %s", noted.error().message.c_str());
    self.reserve.release();
    const auto summary = self.assembler.finish(trackEnds);
    if (!summary)
        return summary;
    if (::unlink(MovieJournal::pathFor(self.path).c_str()) != 0)
        qCWarning(logCapture, "movie's journal not removed: errno %d", errno);
    return summary;
}

void MovieWriter::discard() {
    m_implementation->stopThreads();
    // The journal goes last: a movie that is left alone would never be looked at again.
    ::unlink(m_implementation->path.c_str());
    ::unlink(MovieJournal::pathFor(m_implementation->path).c_str());
}

std::uint64_t MovieWriter::finalisationBytes() const {
    std::scoped_lock lock(m_implementation->mutex);
    return m_implementation->headerBytes;
}

std::uint64_t MovieWriter::bytesWritten() const {
    std::scoped_lock lock(m_implementation->mutex);
    return m_implementation->writtenBytes + m_implementation->pendingBytes;
}

} // namespace vantrell
