// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera.h"
#include "Platform/CameraSource.h"
#include "Support/Observers.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace vantrell {

/// Port: the cameras of this desktop. Main thread unless said.
class CameraBackend {
public:
    virtual ~CameraBackend() = default;

    /// The cameras that are connected, the default one first; none is no error. Errors:
    /// CameraErrorCode::noCameraServer, serverFailed. Ends within five seconds.
    virtual Task<std::expected<std::vector<Camera>, PlatformError>> cameras(std::stop_token stop) = 0;

    /// Tells whenever a camera comes, goes or becomes the default one, as long as the observation is kept.
    /// Nothing is watched while nobody observes.
    [[nodiscard]] virtual Observation observeCameras(std::function<void()> changed) = 0;

    /// Whether this program may use cameras. Asks the user where the desktop wants that, which may take
    /// minutes; a desktop that does not ask answers at once. False as well when stopped.
    virtual Task<bool> requestAccess(std::stop_token stop) = 0;

    /// The camera with that id; the default one when there is none, or when the id is absent. Touches nothing
    /// until the source is started. Thread-safe.
    virtual std::unique_ptr<CameraSource> makeSource(std::optional<std::string> id) = 0;
};

} // namespace vantrell
