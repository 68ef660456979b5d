// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderChoice.h"
#include "Platform/CameraBackend.h"
#include "Platform/CameraSessionFactory.h"

#include <memory>

namespace vantrell {

/// Makes the sessions that every backend's cameras share: StagedCameraSession.
class StagedCameraSessionFactory final : public CameraSessionFactory {
public:
    /// The backend outlives it.
    StagedCameraSessionFactory(CameraBackend &cameras, EncoderPreference encoder);

    std::unique_ptr<CameraSession> makeSession(std::optional<std::string> cameraId) override;

private:
    CameraBackend &m_cameras;
    const std::shared_ptr<EncoderChoice> m_encoders;
};

} // namespace vantrell
