// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/StagedCameraSessionFactory.h"

#include "Media/Camera/StagedCameraSession.h"

#include <utility>

namespace vantrell {

StagedCameraSessionFactory::StagedCameraSessionFactory(CameraBackend &cameras, EncoderPreference encoder)
    : m_cameras(cameras), m_encoders(std::make_shared<EncoderChoice>(encoder, hardwareEncoders())) {}

std::unique_ptr<CameraSession> StagedCameraSessionFactory::makeSession(std::optional<std::string> cameraId) {
    return std::make_unique<StagedCameraSession>(m_cameras.makeSource(std::move(cameraId)), m_encoders);
}

} // namespace vantrell
