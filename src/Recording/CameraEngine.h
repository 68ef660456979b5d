// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Platform/CameraBackend.h"
#include "Platform/CameraSessionFactory.h"
#include "Recording/RecordedSegment.h"
#include "Recording/RecordingJournal.h"
#include "Support/Clock.h"
#include "Support/OneShot.h"
#include "Support/TaskScope.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// What a camera's recording works with. All outlive the engine.
struct CameraPorts {
    CameraBackend &cameras;
    CameraSessionFactory &sessions;
    Clock &clock;
};

/// Records the camera as a movie of its own beside the screen's, a file for each stretch of the recording,
/// and has the live picture meanwhile. Main thread; one operation at a time.
///
///     made --open--> open --start--> recording --endFile--> open --start--> ... --stop, cancel--> stopped
///
/// A camera that is unplugged while it records ends its file; when it comes back, the next file begins. What
/// was recorded is kept whatever happens: nothing here fails but the opening.
class CameraEngine {
public:
    /// Of the camera with that id, or the default one.
    CameraEngine(CameraPorts ports, std::optional<std::string> deviceId);
    ~CameraEngine();
    CameraEngine(const CameraEngine &) = delete;
    CameraEngine &operator=(const CameraEngine &) = delete;

    /// The camera went away (with why) or has come back (none).
    std::function<void(std::optional<PlatformError>)> onProblem;

    /// Switches the camera on. Fails when none can be opened, with CameraErrorCode; the engine is then of no
    /// use.
    Task<std::expected<void, StreamStartFailure>> open(std::stop_token stop);
    /// Begins a new file. The journal is the recording's and is told of the file.
    void start(std::shared_ptr<RecordingJournal> journal);
    /// Ends the file that is being recorded; returns at once.
    void endFile();
    /// Ends it and waits until it is whole, at most 15 seconds. The camera stays switched on.
    Task<> finishFile(std::stop_token stop);

    /// Ends it for good and switches the camera off as soon as the file is whole; returns at once.
    void release();

    /// Ends the recording and makes the capture: one movie in step with the screen's, which was joined from
    /// `screen`. None when there is nothing, or nothing that can be read: the log says what.
    Task<std::optional<CaptureResult>> stop(std::vector<RecordedSegment> screen, std::stop_token stop);
    /// Ends it and deletes what was recorded.
    Task<> cancel(std::stop_token stop);

    bool isRecording() const { return m_isWanted; }
    /// The files written so far, in order.
    std::vector<std::filesystem::path> segmentURLs() const;
    std::optional<Clock::WallTime> startedAt() const { return m_startedAt; }
    /// Host time at which the first file began: that of its first picture.
    std::optional<double> anchorHostTime() const { return m_anchorHostTime; }
    /// Why the camera is missing, if it is.
    const std::optional<PlatformError> &problem() const { return m_problem; }

    /// As CameraSession has it; none of it is mirrored.
    void showPreview(int squarePixels, std::function<void()> changed);
    QImage preview() { return m_session ? m_session->preview() : QImage(); }

private:
    struct File;

    Task<std::expected<void, StreamStartFailure>> openSession(std::stop_token stop);
    void beginFile();
    void firstFrame(const std::shared_ptr<File> &file, double hostTime);
    void fileEnded(const std::shared_ptr<File> &file, const std::optional<PlatformError> &error);
    void cameraEnded(PlatformError error);
    void lookForCamera();
    Task<> reopen(std::stop_token stop);
    Task<> watch(std::shared_ptr<File> file, std::stop_token stop);
    void close();

    CameraPorts m_ports;
    /// Of the camera that was opened, once it is.
    std::optional<std::string> m_deviceId;
    std::shared_ptr<RecordingJournal> m_journal;
    std::optional<Clock::WallTime> m_startedAt;
    std::optional<double> m_anchorHostTime;
    std::vector<RecordedSegment> m_files;
    std::shared_ptr<File> m_current;
    /// Somebody wants a file to be recorded, whether or not the camera is there.
    bool m_isWanted = false;
    std::optional<PlatformError> m_problem;
    bool m_isReleased = false;
    bool m_isSessionStuck = false;
    int m_previewPixels = 0;
    std::function<void()> m_previewChanged;
    Observation m_devices;
    std::shared_ptr<CameraEngine *> m_self;
    std::unique_ptr<CameraSession> m_session;
    TaskScope m_reopening;
    TaskScope m_scope;
};

} // namespace vantrell
