// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/CameraEngine.h"

#include "Capture/CaptureStorage.h"
#include "Platform/CameraError.h"
#include "Recording/CameraLayer.h"
#include "Recording/RecordingRecovery.h"
#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"
#include "Support/Log.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds fileLimit(15);

void logRefusal(const PlatformError &error, const std::string &camera) {
    if (isCameraError(error, CameraErrorCode::noCamera) ||
        isCameraError(error, CameraErrorCode::noCameraServer))
        qCCritical(logCapture, "camera init: no capture device found");
    else if (isCameraError(error, CameraErrorCode::noPicture))
        qCCritical(logCapture, "camera init: session rejected input/output");
    else
        qCCritical(logCapture, "camera init: input creation failed for %s", camera.c_str());
}

} // namespace

/// A file from the wish for it until it is whole.
struct CameraEngine::File {
    std::filesystem::path url;
    std::optional<double> anchorHostTime;
    /// False when nobody waits for it any longer.
    OneShot<bool> ended;
    bool isAskedToEnd = false;
};

CameraEngine::CameraEngine(CameraPorts ports, std::optional<std::string> deviceId)
    : m_ports(ports), m_deviceId(std::move(deviceId)), m_self(std::make_shared<CameraEngine *>(this)) {}

CameraEngine::~CameraEngine() {
    close();
}

Task<std::expected<void, StreamStartFailure>> CameraEngine::open(std::stop_token stop) {
    auto opened = co_await openSession(stop);
    const auto *const error = opened ? nullptr : std::get_if<PlatformError>(&opened.error());
    if (error)
        logRefusal(*error, m_session->camera().name);
    co_return opened;
}

Task<std::expected<void, StreamStartFailure>> CameraEngine::openSession(std::stop_token stop) {
    m_session = m_ports.sessions.makeSession(m_deviceId);
    auto opened = co_await m_session->open(stop);
    if (opened)
        m_deviceId = m_session->camera().id;
    co_return opened;
}

void CameraEngine::close() {
    *m_self = nullptr;
    m_reopening.cancel();
    m_devices.reset();
    // What hangs must not hang the interface too.
    if (m_isSessionStuck)
        postToWorker([session = std::shared_ptr(std::move(m_session))]() mutable { session.reset(); });
    m_session.reset();
}

std::vector<std::filesystem::path> CameraEngine::segmentURLs() const {
    std::vector<std::filesystem::path> urls;
    for (const RecordedSegment &file : m_files)
        urls.push_back(file.fileURL);
    return urls;
}

void CameraEngine::showPreview(int squarePixels, std::function<void()> changed) {
    m_previewPixels = squarePixels;
    m_previewChanged = std::move(changed);
    if (m_session)
        m_session->showPreview(m_previewPixels, m_previewChanged);
}

void CameraEngine::start(std::shared_ptr<RecordingJournal> journal) {
    if (std::exchange(m_isWanted, true))
        return;
    m_journal = std::move(journal);
    if (!m_startedAt)
        m_startedAt = m_ports.clock.wallNow();
    if (m_problem)
        lookForCamera();
    else
        beginFile();
}

void CameraEngine::beginFile() {
    const auto file = std::make_shared<File>();
    file->url = CaptureStorage::newFileURL("mov");
    m_current = file;
    // Named before it exists: a movie that is there and not named would not be found again.
    if (m_journal)
        m_journal->addCameraSegment(file->url);
    const EventLoop loop = EventLoop::current();
    const auto self = m_self;
    CaptureStreamEvents events;
    events.firstFrame = [loop, self, file](double hostTime) {
        loop.post([self, file, hostTime] {
            if (*self)
                (*self)->firstFrame(file, hostTime);
        });
    };
    events.stoppedWithError = [loop, self](PlatformError error) {
        loop.post([self, error = std::move(error)] {
            if (*self)
                (*self)->cameraEnded(error);
        });
    };
    const auto end = [loop, self, file](std::optional<PlatformError> error) {
        loop.post([self, file, error = std::move(error)] {
            if (*self)
                (*self)->fileEnded(file, error);
        });
    };
    events.recordingFinished = [end](const RecordingSummary &) { end(std::nullopt); };
    events.recordingFailed = [end](PlatformError error) { end(std::move(error)); };
    m_session->startRecording(file->url, std::move(events));
}

void CameraEngine::firstFrame(const std::shared_ptr<File> &file, double hostTime) {
    file->anchorHostTime = hostTime;
    if (!m_anchorHostTime)
        m_anchorHostTime = hostTime;
    if (m_journal)
        m_journal->addCameraAnchor(file->url, hostTime);
}

void CameraEngine::fileEnded(const std::shared_ptr<File> &file, const std::optional<PlatformError> &error) {
    std::error_code ignored;
    // Whatever the error says: what is there is kept.
    if (file->anchorHostTime && std::filesystem::exists(file->url, ignored))
        m_files.push_back({file->url, *file->anchorHostTime, 0});
    else if (error)
        qCCritical(logCapture, "camera segment failed: %s", error->message.c_str());
    if (m_current == file)
        m_current.reset();
    file->ended.resolve(true);
    if (m_isReleased)
        close();
    else
        // It may have come back while its last file was still being finished.
        lookForCamera();
}

void CameraEngine::cameraEnded(PlatformError error) {
    if (m_problem)
        return;
    qCCritical(logCapture, "camera stopped: %s", error.message.c_str());
    m_problem = std::move(error);
    m_devices = m_ports.cameras.observeCameras([this] { lookForCamera(); });
    lookForCamera();
    if (onProblem)
        onProblem(m_problem);
}

void CameraEngine::lookForCamera() {
    // The last file first: it is the session's that is to be replaced.
    if (!m_problem || m_current)
        return;
    m_reopening.cancel();
    m_reopening.start(this, &CameraEngine::reopen);
}

Task<> CameraEngine::reopen(std::stop_token stop) {
    // That camera again or none: nobody has agreed to be seen by another one.
    const auto cameras = co_await m_ports.cameras.cameras(stop);
    if (!cameras || !m_deviceId || std::ranges::find(*cameras, *m_deviceId, &Camera::id) == cameras->end())
        co_return;
    const auto opened = co_await openSession(stop);
    if (!opened)
        co_return;
    m_problem.reset();
    m_session->showPreview(m_previewPixels, m_previewChanged);
    if (m_isWanted)
        beginFile();
    if (onProblem)
        onProblem(std::nullopt);
}

void CameraEngine::endFile() {
    m_isWanted = false;
    if (!m_current || std::exchange(m_current->isAskedToEnd, true))
        return;
    if (m_session)
        m_session->stopRecording();
    m_scope.start(this, &CameraEngine::watch, m_current);
}

void CameraEngine::release() {
    endFile();
    m_isReleased = true;
    if (!m_current)
        close();
}

Task<> CameraEngine::watch(std::shared_ptr<File> file, std::stop_token stop) {
    if (!co_await m_ports.clock.sleep(fileLimit, stop) || !file->ended.resolve(false))
        co_return;
    qCCritical(logCapture, "camera segment finalize timed out");
    m_isSessionStuck = true;
    if (m_current == file)
        m_current.reset();
}

Task<> CameraEngine::finishFile(std::stop_token stop) {
    endFile();
    if (const std::shared_ptr<File> file = m_current)
        co_await file->ended.wait(stop);
}

Task<std::optional<CaptureResult>> CameraEngine::stop(std::vector<RecordedSegment> screen,
                                                      std::stop_token stop) {
    co_await finishFile(stop);
    if (stop.stop_requested())
        co_return std::nullopt;
    close();
    CameraLayer layer;
    layer.files = m_files;
    layer.screen = std::move(screen);
    layer.startedAt = m_startedAt.value_or(layer.startedAt);
    layer.now = m_ports.clock.wallNow();
    if (m_journal) {
        layer.recordingId = m_journal->recordingId();
        layer.journal = m_journal->path();
    }
    auto capture = co_await runBlocking(
        [layer] {
            auto made = makeCameraCapture(layer);
            if (made && !*made)
                RecordingRecovery::forget(layer.journal, RecordingLayer::camera);
            return made;
        },
        stop);
    if (!capture) {
        if (!std::holds_alternative<Cancelled>(capture.error()))
            qCCritical(logCapture, "camera not saved: %s", description(capture.error()).c_str());
        co_return std::nullopt;
    }
    co_return std::move(*capture);
}

Task<> CameraEngine::cancel(std::stop_token stop) {
    co_await finishFile(stop);
    close();
    co_await runBlocking(
        [files = segmentURLs()] {
            std::error_code ignored;
            for (const std::filesystem::path &file : files)
                std::filesystem::remove(file, ignored);
        },
        stop);
}

} // namespace vantrell
