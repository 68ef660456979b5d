// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieWriter.h"
#include "Platform/CameraBackend.h"
#include "Platform/CameraSessionFactory.h"
#include "Support/Clock.h"

#include <memory>
#include <optional>
#include <vector>

namespace vantrell::testing {

/// Cameras whose files end when and how the test says. Their movies are real, one picture long.
class ScriptedCameras final : public CameraBackend, public CameraSessionFactory {
public:
    struct Session {
        std::optional<std::string> wanted;
        std::filesystem::path file;
        CaptureStreamEvents events;
        std::unique_ptr<MovieWriter> writer;
        bool isAskedToStop = false;
    };

    std::vector<Camera> connected{{"built-in", "Built-in", true}};
    std::optional<PlatformError> openError;
    /// Ends the file as soon as it is asked to.
    bool answersStop = true;
    std::vector<std::shared_ptr<Session>> sessions;

    Session &session() { return *sessions.back(); }
    /// The first picture of the file under way.
    void picture(double hostTime);
    /// Writes the movie's end, of so many seconds, and says so.
    void end(double seconds);
    /// A camera has come or gone.
    void notify() { m_observers.notify(); }

    Task<std::expected<std::vector<Camera>, PlatformError>> cameras(std::stop_token) override;
    Observation observeCameras(std::function<void()> changed) override;
    Task<bool> requestAccess(std::stop_token) override { co_return true; }
    std::unique_ptr<CameraSource> makeSource(std::optional<std::string>) override { return nullptr; }
    std::unique_ptr<CameraSession> makeSession(std::optional<std::string> cameraId) override;

private:
    Observers m_observers;
};

} // namespace vantrell::testing
