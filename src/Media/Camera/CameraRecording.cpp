// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/CameraRecording.h"

#include "Support/HostTime.h"
#include "Support/Log.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

/// Enough for an encoder and a disk that are late by a fifth of a second.
constexpr int mostPictures = 6;
/// A camera that sends nothing for so long stands still: the movie begins with what it showed last.
constexpr std::chrono::milliseconds firstPicturePatience{500};

} // namespace

CameraRecording::CameraRecording(std::filesystem::path file, CaptureStreamEvents events, Kind kind,
                                 double from, std::shared_ptr<EncoderChoice> encoders,
                                 LastPicture lastPicture)
    : m_file(std::move(file)), m_events(std::move(events)), m_kind(kind), m_from(from),
      m_encoders(std::move(encoders)), m_lastPicture(std::move(lastPicture)),
      m_exchange(kind.size, mostPictures), m_thread("camera file", [this] { run(); }) {}

CameraRecording::~CameraRecording() {
    end(hostNow());
    m_thread.join();
}

Nv12Frame *CameraRecording::roomFor(double hostTime) {
    const std::scoped_lock lock(m_mutex);
    if (hostTime < std::max(m_from, m_epoch) || (m_end && hostTime >= *m_end) || m_lost || m_encodeFailed)
        return nullptr;
    m_room = m_exchange.tryAcquire();
    m_roomTime = hostTime;
    if (!m_room && m_dropped++ == 0)
        qCWarning(logCapture, "the encoder cannot keep up, the camera's pictures are dropped");
    return m_room ? &m_room->frame : nullptr;
}

void CameraRecording::filled() {
    const std::scoped_lock lock(m_mutex);
    submit(std::exchange(m_room, nullptr), m_roomTime);
    m_changed.notify_all();
}

void CameraRecording::submit(FrameExchange::Slot *slot, double hostTime) {
    // The room may have been given before the movie began with the camera's last picture.
    if (m_epoch > 0 && hostTime <= m_epoch)
        return m_exchange.giveBack(slot);
    if (m_epoch == 0)
        m_epoch = hostTime;
    BlockMap everything(m_kind.size);
    everything.markAll();
    m_exchange.submit(slot, std::move(everything), hostTime);
}

void CameraRecording::end(double hostTime) {
    {
        const std::scoped_lock lock(m_mutex);
        if (m_end)
            return;
        m_end = hostTime;
    }
    m_changed.notify_all();
}

void CameraRecording::lost(PlatformError error, double hostTime) {
    {
        const std::scoped_lock lock(m_mutex);
        if (m_end)
            return;
        m_end = hostTime;
        m_lost = std::move(error);
    }
    m_changed.notify_all();
}

bool CameraRecording::isOver() const {
    const std::scoped_lock lock(m_mutex);
    return m_isOver;
}

void CameraRecording::run() {
    if (auto encoder = open(); !encoder) {
        if (m_writer)
            m_writer->discard();
        m_writer.reset();
        if (m_events.recordingFailed)
            m_events.recordingFailed(encoder.error());
    } else {
        waitForFirstPicture();
        m_encode = std::make_unique<EncodeStage>(
            m_exchange, std::move(*encoder), *m_writer, m_track,
            [this] {
                {
                    const std::scoped_lock lock(m_mutex);
                    m_encodeFailed = true;
                }
                m_changed.notify_all();
            },
            m_epoch);
        if (m_events.firstFrame)
            m_events.firstFrame(m_epoch);
        waitForEnd();
        finish();
        m_encode.reset();
        m_writer.reset();
    }
    const std::scoped_lock lock(m_mutex);
    m_isOver = true;
}

std::expected<std::unique_ptr<VideoEncoder>, PlatformError> CameraRecording::open() {
    MovieWriter::Options options;
    options.elapsed = [this] {
        const std::scoped_lock lock(m_mutex);
        return m_epoch > 0 ? hostNow() - m_epoch : 0;
    };
    auto writer = MovieWriter::create(m_file, options);
    if (!writer)
        return std::unexpected(writer.error());
    m_writer = std::move(*writer);
    auto encoder = m_encoders->create(m_kind.size, m_kind.content, m_kind.matrix);
    if (!encoder)
        return encoder;
    m_track = m_writer->addVideoTrack({.size = (*encoder)->encodedSize(),
                                       .timeScale = VideoEncoder::timeScale,
                                       .decoderConfiguration = (*encoder)->codecConfiguration(),
                                       .matrix = m_kind.matrix});
    return encoder;
}

void CameraRecording::waitForFirstPicture() {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, firstPicturePatience, [this] { return m_epoch > 0 || m_end; });
    if (m_epoch > 0)
        return;
    FrameExchange::Slot *const slot = m_exchange.tryAcquire();
    lock.unlock();
    m_lastPicture(slot->frame);
    lock.lock();
    // A picture that came meanwhile begins the movie instead.
    if (m_epoch > 0)
        m_exchange.giveBack(slot);
    else
        submit(slot, m_end ? m_from : hostNow());
}

void CameraRecording::waitForEnd() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return (m_end || m_encodeFailed) && !m_room; });
    if (!m_end)
        m_end = hostNow();
}

void CameraRecording::finish() {
    std::int64_t end = m_encode->ticks(*m_end);
    const EncodeStage::Result encoded = m_encode->finish(end);
    if (encoded.frames > 0)
        end = std::max(end, encoded.lastPresentationTime + 1);
    if (encoded.encoderBroke)
        m_encoders->encoderFailed();
    const std::optional<PlatformError> problem = encoded.error ? encoded.error : m_lost;
    if (problem && m_events.stoppedWithError)
        m_events.stoppedWithError(*problem);
    const TrackEnd trackEnd{m_track, end};
    const auto finished = m_writer->finish({&trackEnd, 1});
    if (!finished) {
        if (m_events.recordingFailed)
            m_events.recordingFailed(finished.error());
        return;
    }
    if (m_dropped > 0)
        qCInfo(logCapture, "camera's pictures dropped: %lld", static_cast<long long>(m_dropped));
    if (m_events.recordingFinished)
        m_events.recordingFinished({.durationSeconds = finished->durationMs / 1000,
                                    .frames = encoded.frames,
                                    .droppedFrames = m_dropped,
                                    .soundProblem = std::nullopt});
}

} // namespace vantrell
