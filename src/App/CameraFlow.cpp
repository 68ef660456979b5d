// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/CameraFlow.h"

#include "Platform/CameraError.h"
#include "Support/Log.h"

#include <utility>
#include <variant>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

/// How long the bubble says why there is no camera.
constexpr auto problemShown = 8s;

/// Why there is no picture, in as few words as the bubble has room for.
std::string bubbleWords(const PlatformError &problem) {
    if (isCameraError(problem, CameraErrorCode::unplugged))
        return "Disconnected";
    if (isCameraError(problem, CameraErrorCode::inUse))
        return "In use elsewhere";
    if (isCameraError(problem, CameraErrorCode::noPicture))
        return "No picture";
    return "No camera";
}

} // namespace

void CameraFlow::start(std::shared_ptr<RecordingEngine> engine, const Display &display) {
    m_isTogglingPause = false;
    m_problem.reset();
    m_scope.start(this, &CameraFlow::run, std::move(engine), display);
}

Task<> CameraFlow::run(std::shared_ptr<RecordingEngine> engine, Display display, std::stop_token stop) {
    Platform &platform = m_services.platform;
    const bool granted = co_await platform.cameras->requestAccess(stop);
    if (stop.stop_requested())
        co_return;
    if (!granted) {
        qCInfo(logCapture, "camera skipped: granted=false");
        m_problem = cameraError(CameraErrorCode::accessRefused);
        co_return;
    }
    const auto bubble = std::make_shared<CameraBubbleState>();
    m_services.ui.showCameraBubble(bubble, display);
    const CameraPorts ports{*platform.cameras, *platform.cameraSessions, m_services.clock};
    const auto camera = std::make_shared<CameraEngine>(ports, m_services.settings.cameraDeviceId());
    const auto opened = co_await camera->open(stop);
    if (stop.stop_requested())
        co_return;
    if (!opened) {
        m_problem = std::get<PlatformError>(opened.error());
        bubble->problem = bubbleWords(*m_problem);
        bubble->camera = CameraBubbleState::Camera::missing;
        if (co_await m_services.clock.sleep(problemShown, stop))
            m_services.ui.hideCameraBubble();
        co_return;
    }
    m_camera = camera;
    connect(bubble);
    // While it is being paused or resumed, the end of that begins the first file.
    if (!engine->isPaused() && !m_isTogglingPause)
        camera->start(engine->journal());
}

void CameraFlow::connect(const std::shared_ptr<CameraBubbleState> &bubble) {
    const std::weak_ptr camera = m_camera;
    bubble->showPreview = [camera](int squarePixels, std::function<void()> newer) {
        if (const auto engine = camera.lock())
            engine->showPreview(squarePixels, std::move(newer));
    };
    bubble->preview = [camera] {
        const auto engine = camera.lock();
        return engine ? engine->preview() : QImage();
    };
    m_camera->onProblem = [bubble](const std::optional<PlatformError> &problem) {
        using Camera = CameraBubbleState::Camera;
        bubble->problem = problem ? bubbleWords(*problem) : std::string();
        bubble->camera = problem ? Camera::missing : Camera::running;
    };
    bubble->camera = CameraBubbleState::Camera::running;
}

void CameraFlow::pauseBegins(bool isPausing) {
    m_isTogglingPause = true;
    if (isPausing && m_camera)
        m_camera->endFile();
}

Task<> CameraFlow::pauseEnds(std::shared_ptr<RecordingEngine> engine, std::stop_token stop) {
    m_isTogglingPause = false;
    const std::shared_ptr<CameraEngine> camera = m_camera;
    if (!camera)
        co_return;
    if (!engine->isPaused())
        camera->start(engine->journal());
    else
        co_await camera->finishFile(stop);
}

CameraFlow::Taken CameraFlow::takeOut() {
    m_scope.cancel();
    m_services.ui.hideCameraBubble();
    // At the same moment as the screen, however long that takes to end.
    if (m_camera)
        m_camera->release();
    return {std::exchange(m_camera, nullptr), std::exchange(m_problem, std::nullopt)};
}

} // namespace vantrell
