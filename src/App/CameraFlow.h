// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/UserInterface.h"
#include "Platform/Platform.h"
#include "Recording/CameraEngine.h"
#include "Recording/RecordingEngine.h"
#include "Session/CaptureSettings.h"
#include "Support/Clock.h"
#include "Support/TaskScope.h"

#include <memory>
#include <optional>
#include <stop_token>

namespace vantrell {

/// The camera of the recording under way, with its bubble. The recording goes on whatever becomes of it. Main
/// thread.
class CameraFlow {
public:
    /// All outlive the flow.
    struct Services {
        Platform &platform;
        UserInterface &ui;
        CaptureSettings &settings;
        Clock &clock;
    };
    /// What is left of it at the end.
    struct Taken {
        /// Null without one.
        std::shared_ptr<CameraEngine> camera;
        /// Why there is none, if one was wanted.
        std::optional<PlatformError> problem;
    };

    explicit CameraFlow(Services services) : m_services(services) {}
    CameraFlow(const CameraFlow &) = delete;
    CameraFlow &operator=(const CameraFlow &) = delete;

    /// Beside a screen that is recorded already. Not waited for: the desktop may ask its user for minutes.
    void start(std::shared_ptr<RecordingEngine> engine, const Display &display);
    /// The screen is about to be paused or resumed.
    void pauseBegins(bool isPausing);
    /// It has been, or could not be: the camera does the same.
    Task<> pauseEnds(std::shared_ptr<RecordingEngine> engine, std::stop_token stop);
    /// Ends it at this moment, and its bubble with it; it is the caller's from here on.
    Taken takeOut();

private:
    Task<> run(std::shared_ptr<RecordingEngine> engine, Display display, std::stop_token stop);
    void connect(const std::shared_ptr<CameraBubbleState> &bubble);

    const Services m_services;
    std::shared_ptr<CameraEngine> m_camera;
    std::optional<PlatformError> m_problem;
    bool m_isTogglingPause = false;
    TaskScope m_scope;
};

} // namespace vantrell
