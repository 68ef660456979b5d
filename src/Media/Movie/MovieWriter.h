// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieSink.h"

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>

namespace vantrell {

struct MovieSummary {
    double durationMs = 0;
    std::uint64_t bytes = 0;
};

/// Writes one QuickTime movie so that no crash can take more than its last two seconds.
///
/// The movie file grows by whole chunks of samples; beside it grows a journal (MovieJournal) that says where
/// each sample lies. What survives: a kill, everything handed over more than `flushInterval` before; a power
/// cut, everything more than `flushInterval` + `syncInterval` before. MovieRecovery makes a playable movie of
/// the two files. `finish` puts the sample tables behind the data and removes the journal: what is left is
/// an ordinary movie. Interrupted anywhere, it leaves what MovieRecovery needs. Destroying an unfinished
/// writer flushes and leaves both files.
///
/// Every method is thread-safe. `append` copies the sample and returns; the disk is written to by a thread of
/// the writer's own and synchronised by another, so that an encoder never waits for the disk unless
/// `bufferLimit` bytes are waiting already: then it blocks until there is room, and the stages before it drop
/// frames.
class MovieWriter final : public MovieSink {
public:
    struct Options {
        /// Seconds since the movie's zero. When set it is noted in the journal every second, so that a
        /// picture that stands still keeps its duration after a crash. Called on the writer's thread.
        std::function<double()> elapsed;
        std::chrono::milliseconds flushInterval{500};
        std::chrono::milliseconds syncInterval{1000};
        std::size_t bufferLimit = std::size_t(16) << 20;
    };

    /// Creates the movie and its journal; fails when the movie exists.
    static std::expected<std::unique_ptr<MovieWriter>, PlatformError>
    create(const std::filesystem::path &path, Options options);
    static std::expected<std::unique_ptr<MovieWriter>, PlatformError>
    create(const std::filesystem::path &path) {
        return create(path, Options());
    }

    ~MovieWriter() override;
    MovieWriter(const MovieWriter &) = delete;
    MovieWriter &operator=(const MovieWriter &) = delete;

    TrackId addVideoTrack(const VideoTrackFormat &format) override;
    TrackId addAudioTrack(const AudioTrackFormat &format) override;

    /// An error is the first failure of the disk: what came before is kept, and `finish` still makes a movie
    /// of it.
    std::expected<void, PlatformError> append(TrackId track, const EncodedSample &sample) override;

    /// Ends the tracks: the last picture is held to its end, sound is cut there. A track that is not named
    /// ends with its last sample. Blocks until the movie is whole on the disk; call it on a worker thread,
    /// once.
    std::expected<MovieSummary, PlatformError> finish(std::span<const TrackEnd> ends);

    /// Nothing of it is wanted: ends, and leaves neither movie nor journal. Instead of `finish`.
    void discard();

    /// Room on the disk that finishing takes. The writer holds it in reserve where the file system can, and
    /// reports a full disk while the reserve still suffices.
    std::uint64_t finalisationBytes() const;

    /// Bytes of the movie so far, with those that wait for the disk.
    std::uint64_t bytesWritten() const;

private:
    struct Implementation;
    explicit MovieWriter(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> m_implementation;
};

} // namespace vantrell
