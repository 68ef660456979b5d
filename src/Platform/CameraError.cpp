// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/CameraError.h"

namespace vantrell {

namespace {

const char *sentence(CameraErrorCode code) {
    switch (code) {
    case CameraErrorCode::noCameraServer:
        return "Cameras cannot be used on this desktop";
    case CameraErrorCode::noCamera:
        return "No camera is connected";
    case CameraErrorCode::inUse:
        return "The camera is in use by another program";
    case CameraErrorCode::accessRefused:
        return "The desktop does not allow the use of cameras";
    case CameraErrorCode::noPicture:
        return "The camera sends no picture";
    case CameraErrorCode::unplugged:
        return "The camera was disconnected";
    case CameraErrorCode::serverFailed:
        break;
    }
    return "The desktop's camera service does not answer";
}

} // namespace

PlatformError cameraError(CameraErrorCode code) {
    return PlatformError{cameraErrorDomain, int(code), sentence(code)};
}

bool isCameraError(const PlatformError &error, CameraErrorCode code) {
    return error.domain == cameraErrorDomain && error.code == int(code);
}

} // namespace vantrell
