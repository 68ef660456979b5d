// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/StagedCameraSession.h"

#include "Platform/CameraError.h"
#include "Support/HostTime.h"

#include <libyuv.h>

#include <utility>

namespace vantrell {

namespace {

/// How often a picture is kept that nobody looks at: what a movie begins with if the camera stands still.
constexpr double keepInterval = 0.5;

void copyPicture(const Nv12Frame &from, Nv12Frame &to) {
    const auto [width, height] = from.picture();
    libyuv::NV12Copy(from.luma(), int(from.stride()), from.chroma(), int(from.stride()), to.luma(),
                     int(to.stride()), to.chroma(), int(to.stride()), width, height);
}

} // namespace

StagedCameraSession::StagedCameraSession(std::unique_ptr<CameraSource> source,
                                         std::shared_ptr<EncoderChoice> encoders)
    : m_encoders(std::move(encoders)), m_source(std::move(source)) {}

StagedCameraSession::~StagedCameraSession() {
    stopRecording();
    m_source.reset();
}

Task<std::expected<void, StreamStartFailure>> StagedCameraSession::open(std::stop_token stop) {
    m_source->start(
        {.frame = [this](const CameraFrame &frame) { take(frame); },
         .stateChanged = [this](CameraSourceState state,
                                std::optional<PlatformError> error) { stateChanged(state, error); }});
    auto opened = co_await m_opened.wait(stop);
    if (opened && *opened) {
        m_camera = m_source->camera();
        co_return std::expected<void, StreamStartFailure>();
    }
    m_source.reset();
    if (!opened)
        co_return std::unexpected(StreamStartFailure(Cancelled{}));
    co_return std::unexpected(StreamStartFailure(std::move(opened->error())));
}

void StagedCameraSession::stateChanged(CameraSourceState state, const std::optional<PlatformError> &error) {
    if (state == CameraSourceState::running)
        return;
    const PlatformError why = error.value_or(cameraError(CameraErrorCode::unplugged));
    m_opened.resolve(std::unexpected(why));
    const std::scoped_lock lock(m_mutex);
    if (m_recording)
        m_recording->lost(why, hostNow());
}

StagedCameraSession::Use StagedCameraSession::useOf(const CameraFrame &frame) {
    // Each picture of a video stream is needed to read the next one.
    if (frame.format == CameraFormat::h264 || frame.hostTime - m_keptAt > keepInterval)
        return Use::kept;
    if (const std::scoped_lock lock(m_mutex); m_recording)
        return Use::kept;
    return m_preview->wantedSide() > 0 ? Use::lookedAt : Use::none;
}

void StagedCameraSession::takeForPreview(const CameraFrame &frame) {
    if (!m_reader.open(frame, m_preview->wantedSide()))
        return;
    if (!m_lookedAt || m_lookedAt->picture() != m_reader.size())
        m_lookedAt = std::make_unique<Nv12Frame>(m_reader.size());
    m_reader.write(*m_lookedAt);
    m_preview->offer(*m_lookedAt, m_reader.matrix());
}

void StagedCameraSession::take(const CameraFrame &frame) {
    const Use use = useOf(frame);
    if (use == Use::lookedAt)
        takeForPreview(frame);
    // Unpacking takes longest: before the lock.
    if (use != Use::kept || !m_reader.open(frame))
        return;
    const std::scoped_lock lock(m_mutex);
    if (!m_last) {
        m_last = std::make_unique<Nv12Frame>(m_reader.size());
        m_matrix = m_reader.matrix();
        if (frame.format == CameraFormat::mjpeg)
            m_content = PictureContent::jpegCamera;
    }
    Nv12Frame *const room = m_recording ? m_recording->roomFor(frame.hostTime) : nullptr;
    const bool isLookedAt = m_preview->wantedSide() > 0;
    const bool isKept = !room && (isLookedAt || frame.hostTime - m_keptAt > keepInterval);
    if (room)
        m_reader.write(*room);
    if (isKept) {
        m_reader.write(*m_last);
        m_keptAt = frame.hostTime;
    }
    if (isLookedAt)
        m_preview->offer(room ? *room : *m_last, m_matrix);
    if (room) {
        if (frame.hostTime - m_keptAt > keepInterval) {
            copyPicture(*room, *m_last);
            m_keptAt = frame.hostTime;
        }
        m_recording->filled();
    }
    m_opened.resolve({});
}

void StagedCameraSession::startRecording(std::filesystem::path file, CaptureStreamEvents events) {
    std::erase_if(m_ending, [](const auto &recording) { return recording->isOver(); });
    const std::scoped_lock lock(m_mutex);
    if (!m_last)
        return;
    m_recording = std::make_shared<CameraRecording>(
        std::move(file), std::move(events), CameraRecording::Kind{m_last->picture(), m_matrix, m_content},
        hostNow(), m_encoders, [this](Nv12Frame &to) { copyLast(to); });
}

void StagedCameraSession::copyLast(Nv12Frame &to) {
    const std::scoped_lock lock(m_mutex);
    copyPicture(*m_last, to);
}

void StagedCameraSession::stopRecording() {
    const double now = hostNow();
    const std::scoped_lock lock(m_mutex);
    if (!m_recording)
        return;
    m_recording->end(now);
    m_ending.push_back(std::exchange(m_recording, nullptr));
}

void StagedCameraSession::showPreview(int squarePixels, std::function<void()> changed) {
    m_preview->show(squarePixels, std::move(changed));
}

QImage StagedCameraSession::preview() {
    return m_preview->take();
}

} // namespace vantrell
