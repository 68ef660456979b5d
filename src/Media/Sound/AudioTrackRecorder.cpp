// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/AudioTrackRecorder.h"

#include "Support/HostTime.h"
#include "Support/Log.h"

#include <chrono>
#include <utility>

namespace vantrell {

namespace {

/// Enough for speech and good enough for music.
constexpr int soundBitRate = 128'000;
/// What the queue holds at most: an encoder that stands still for longer loses sound instead of memory.
constexpr double queueSeconds = 5;
/// The encoder wakes for this much at a time. Less would wake the processor more often, more would make a
/// crash take more.
constexpr double batchSeconds = 0.25;
/// A source that is quiet for this long has nothing to say: its silence is recorded, so that a crash finds a
/// track as long as the picture. Sound that arrives later than this is lost.
constexpr double quietSeconds = 1;
/// How long after the stop its last sound may still arrive: a fragment and a cycle of the server's.
constexpr double stopPatience = 0.1;

std::chrono::duration<double> asDuration(double seconds) {
    return std::chrono::duration<double>(seconds);
}

} // namespace

AudioTrackRecorder::AudioTrackRecorder(std::unique_ptr<AudioSource> source, std::string trackName,
                                       SampleTap tap)
    : m_trackName(std::move(trackName)), m_tap(std::move(tap)), m_queue(queueSeconds),
      m_source(std::move(source)) {}

AudioTrackRecorder::~AudioTrackRecorder() {
    m_source.reset();
    endThread();
}

void AudioTrackRecorder::open() {
    m_source->start({.block = [this](const AudioBlock &block) { takeBlock(block); },
                     .stateChanged = [this](AudioSourceState state) { noteState(state); }});
}

std::optional<AudioSourceState>
AudioTrackRecorder::waitForState(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(m_mutex);
    m_wake.wait_until(lock, deadline, [this] { return m_state.has_value(); });
    return m_state;
}

std::expected<void, PlatformError> AudioTrackRecorder::addTo(MovieSink &movie) {
    auto encoder = AacEncoder::create(soundBitRate, m_trackName);
    if (!encoder)
        return std::unexpected(encoder.error());
    auto synchronizer = AudioSynchronizer::create(
        [this](std::span<const float> samples) { return m_encoder->encode(samples, m_toMovie); });
    if (!synchronizer)
        return std::unexpected(synchronizer.error());
    m_encoder.emplace(std::move(*encoder));
    m_synchronizer.emplace(std::move(*synchronizer));
    m_track = movie.addAudioTrack(m_encoder->format());
    m_toMovie = [&movie, track = m_track](const EncodedSample &packet) {
        return movie.append(track, packet);
    };
    return {};
}

void AudioTrackRecorder::begin(double epoch) {
    if (!m_synchronizer)
        return;
    m_synchronizer->setEpoch(epoch);
    m_thread = WorkerThread("sound track", [this] { run(); });
}

void AudioTrackRecorder::requestStop(double hostTime) {
    {
        std::scoped_lock lock(m_mutex);
        m_stopTime = hostTime;
    }
    m_wake.notify_all();
}

std::optional<TrackEnd> AudioTrackRecorder::finish() {
    if (!m_thread.isRunning())
        return std::nullopt;
    m_thread.join();
    m_source.reset();
    return TrackEnd{m_track, m_endFrame};
}

void AudioTrackRecorder::endThread() {
    {
        std::scoped_lock lock(m_mutex);
        m_isStopping = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void AudioTrackRecorder::takeBlock(const AudioBlock &block) {
    if (m_tap)
        m_tap(block.samples);
    bool isUrgent = false;
    {
        std::scoped_lock lock(m_mutex);
        m_queue.push(block);
        isUrgent = m_queue.seconds() >= batchSeconds || m_stopTime.has_value();
    }
    if (isUrgent)
        m_wake.notify_all();
}

void AudioTrackRecorder::noteState(AudioSourceState state) {
    {
        std::scoped_lock lock(m_mutex);
        m_state = state;
    }
    m_wake.notify_all();
    const char *const name = m_trackName.c_str();
    switch (state) {
    case AudioSourceState::running:
        qCInfo(logCapture, "sound comes: %s", name);
        break;
    case AudioSourceState::deviceMissing:
        qCWarning(logCapture, "the device is away: %s", name);
        break;
    case AudioSourceState::serverMissing:
        qCWarning(logCapture, "the sound server is away: %s", name);
        break;
    }
}

void AudioTrackRecorder::run() {
    std::unique_lock lock(m_mutex);
    std::expected<void, PlatformError> recorded;
    while (recorded && waitForWork(lock))
        recorded = recordQueued(lock);
    if (m_isStopping)
        return;
    const double stopTime = m_stopTime.value_or(m_synchronizer->coveredUntil());
    const auto lost = static_cast<long long>(m_queue.lostFrames());
    lock.unlock();
    if (lost > 0)
        qCWarning(logCapture, "sound lost, encoder too slow: %s, %lld frames", m_trackName.c_str(), lost);
    // After a failure, too, the track ends: with what was written before.
    const auto end = m_synchronizer->finish(stopTime);
    m_endFrame = end ? *end : m_encoder->framesTaken();
    if (recorded && end)
        recorded = m_encoder->finish(m_toMovie);
    if (!recorded || !end)
        qCCritical(logCapture, "sound ends early: %s: %s", m_trackName.c_str(),
                   (recorded ? end.error() : recorded.error()).message.c_str());
}

/// False when there is nothing left to do. Owns the lock before and after.
bool AudioTrackRecorder::waitForWork(std::unique_lock<std::mutex> &lock) {
    if (!m_stopTime)
        m_wake.wait_for(lock, asDuration(quietSeconds / 2),
                        [this] { return m_isStopping || m_stopTime || m_queue.seconds() >= batchSeconds; });
    if (m_isStopping || hasReachedStop())
        return false;
    if (!m_stopTime)
        return true;
    // The last sound before the stop is still on its way, if there is a device.
    const double patience = *m_stopTime + stopPatience - hostNow();
    if (m_state == AudioSourceState::running && patience > 0)
        m_wake.wait_for(lock, asDuration(patience), [this] { return m_isStopping || m_queue.seconds() > 0; });
    return !m_isStopping && m_queue.seconds() > 0;
}

/// What comes behind the stop is left in the queue: it may come faster than it can be encoded.
bool AudioTrackRecorder::hasReachedStop() const {
    return m_stopTime && m_synchronizer->coveredUntil() >= *m_stopTime;
}

std::expected<void, PlatformError> AudioTrackRecorder::recordQueued(std::unique_lock<std::mutex> &lock) {
    while (!m_isStopping && !hasReachedStop()) {
        auto block = m_queue.pop();
        if (!block)
            break;
        lock.unlock();
        const auto pushed = m_synchronizer->push(block->samples, block->hostTime, block->startsAnew);
        lock.lock();
        if (!pushed)
            return pushed;
        m_queue.recycle(std::move(*block));
    }
    lock.unlock();
    const double quietUntil = hostNow() - quietSeconds;
    const auto filled = m_synchronizer->fillUntil(quietUntil);
    lock.lock();
    return filled;
}

} // namespace vantrell
