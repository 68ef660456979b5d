// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ScriptedCameras.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

class ScriptedCameraSession final : public CameraSession {
public:
    ScriptedCameraSession(ScriptedCameras &cameras, std::shared_ptr<ScriptedCameras::Session> session)
        : m_cameras(cameras), m_session(std::move(session)) {}

    Task<std::expected<void, StreamStartFailure>> open(std::stop_token) override {
        if (m_cameras.openError)
            co_return std::unexpected(StreamStartFailure(*m_cameras.openError));
        co_return std::expected<void, StreamStartFailure>();
    }
    const Camera &camera() const override { return m_cameras.connected.front(); }
    void startRecording(std::filesystem::path file, CaptureStreamEvents events) override {
        m_session->file = std::move(file);
        m_session->events = std::move(events);
        m_session->isAskedToStop = false;
    }
    void stopRecording() override {
        if (!std::exchange(m_session->isAskedToStop, true) && m_cameras.answersStop)
            m_cameras.end(1);
    }
    void showPreview(int, std::function<void()>) override {}
    QImage preview() override { return {}; }

private:
    ScriptedCameras &m_cameras;
    std::shared_ptr<ScriptedCameras::Session> m_session;
};

} // namespace

void ScriptedCameras::picture(double hostTime) {
    session().writer = *MovieWriter::create(session().file);
    session().writer->addVideoTrack({.size = {64, 48}, .decoderConfiguration = {1, 2, 3}});
    const std::vector<std::uint8_t> data(100, 7);
    EXPECT_TRUE(session().writer->append({0}, {.data = data, .isKey = true}));
    session().events.firstFrame(hostTime);
}

void ScriptedCameras::end(double seconds) {
    if (const auto writer = std::exchange(session().writer, nullptr)) {
        const TrackEnd ends[] = {{{0}, std::int64_t(seconds * 90000)}};
        EXPECT_TRUE(writer->finish(ends));
    }
    session().events.recordingFinished({});
}

Task<std::expected<std::vector<Camera>, PlatformError>> ScriptedCameras::cameras(std::stop_token) {
    co_return std::vector(connected);
}

Observation ScriptedCameras::observeCameras(std::function<void()> changed) {
    return m_observers.observe(std::move(changed));
}

std::unique_ptr<CameraSession> ScriptedCameras::makeSession(std::optional<std::string> cameraId) {
    sessions.push_back(std::make_shared<Session>());
    session().wanted = std::move(cameraId);
    return std::make_unique<ScriptedCameraSession>(*this, sessions.back());
}

} // namespace vantrell::testing
