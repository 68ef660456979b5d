// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieSink.h"
#include "Media/Sound/AacEncoder.h"
#include "Media/Sound/AudioBlockQueue.h"
#include "Media/Sound/AudioSynchronizer.h"
#include "Platform/AudioSource.h"
#include "Support/WorkerThread.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vantrell {

/// One source of sound into one track of a movie: source, queue, synchroniser, encoder, movie. The source's
/// thread only copies into the queue; a thread of the recorder's own does the rest a few times a second.
///
///   constructed -> (open) listening, only the last seconds are kept -> (addTo, begin) recording ->
///   (requestStop) taking what sounded before the stop -> (finish) done
///
/// Used by one thread at a time.
class AudioTrackRecorder {
public:
    /// Gets each block's samples, interleaved, on the source's thread.
    using SampleTap = std::function<void(std::span<const float> samples)>;

    /// `trackName` is what a player's menu shows.
    AudioTrackRecorder(std::unique_ptr<AudioSource> source, std::string trackName, SampleTap tap);
    /// Ends without finishing the track.
    ~AudioTrackRecorder();
    AudioTrackRecorder(const AudioTrackRecorder &) = delete;
    AudioTrackRecorder &operator=(const AudioTrackRecorder &) = delete;

    /// Starts to listen.
    void open();
    /// The source's present state; waits until the deadline at most for it to have one.
    std::optional<AudioSourceState> waitForState(std::chrono::steady_clock::time_point deadline);

    /// Adds the track to the movie. `movie` outlives `finish`.
    std::expected<void, PlatformError> addTo(MovieSink &movie);
    /// Records from here on; `epoch` is the host time of the movie's zero. Does nothing without a track.
    void begin(double epoch);

    /// The track ends at this host time. Returns at once.
    void requestStop(double hostTime);
    /// Waits until the movie has all sound up to the stop, for a tenth of a second at most. None when nothing
    /// was recorded.
    std::optional<TrackEnd> finish();

private:
    void takeBlock(const AudioBlock &block);
    void noteState(AudioSourceState state);
    void run();
    bool waitForWork(std::unique_lock<std::mutex> &lock);
    std::expected<void, PlatformError> recordQueued(std::unique_lock<std::mutex> &lock);
    bool hasReachedStop() const;
    void endThread();

    const std::string m_trackName;
    const SampleTap m_tap;

    // Set before the recording thread begins, then the recording thread's until it has ended.
    std::optional<AacEncoder> m_encoder;
    std::optional<AudioSynchronizer> m_synchronizer;
    AacEncoder::PacketSink m_toMovie;
    TrackId m_track;
    std::int64_t m_endFrame = 0;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    AudioBlockQueue m_queue;
    std::optional<AudioSourceState> m_state;
    std::optional<double> m_stopTime;
    /// At once, unlike at the stop time.
    bool m_isStopping = false;

    WorkerThread m_thread;
    /// Last: it ends first, and with it the calls into the members above.
    std::unique_ptr<AudioSource> m_source;
};

} // namespace vantrell
