// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

namespace vantrell {

enum class CameraErrorCode {
    /// Nobody answers for cameras on this desktop.
    noCameraServer = 1,
    /// There is no camera at all.
    noCamera,
    /// Another program uses it and does not share.
    inUse,
    /// The user or the desktop does not allow it.
    accessRefused,
    /// It is there and sends no picture, or none that can be read.
    noPicture,
    /// It went away while it was used.
    unplugged,
    /// The server is there and refuses or does not answer in time.
    serverFailed,
};

inline constexpr const char *cameraErrorDomain = "camera";

/// With the code's fixed sentence.
PlatformError cameraError(CameraErrorCode code);

bool isCameraError(const PlatformError &error, CameraErrorCode code);

} // namespace vantrell
