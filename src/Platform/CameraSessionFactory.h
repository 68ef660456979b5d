// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CameraSession.h"

#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// Port: switches cameras on. Main thread.
class CameraSessionFactory {
public:
    virtual ~CameraSessionFactory() = default;

    /// The camera with that id; the default one when there is none, or when the id is absent. Touches nothing
    /// until the session is opened. The factory outlives the session.
    virtual std::unique_ptr<CameraSession> makeSession(std::optional<std::string> cameraId) = 0;
};

} // namespace vantrell
