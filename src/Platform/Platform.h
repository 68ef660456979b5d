// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioBackend.h"
#include "Platform/CameraBackend.h"
#include "Platform/CameraSessionFactory.h"
#include "Platform/CaptureBackend.h"
#include "Platform/CaptureStreamFactory.h"
#include "Platform/InputMonitor.h"
#include "Platform/StillCapture.h"

#include <memory>

namespace vantrell {

/// The desktop session behind the ports. What this desktop lacks is stood in for by null backends, which
/// carry the sentence for the user.
struct Platform {
    std::unique_ptr<AudioBackend> audio;
    std::unique_ptr<CaptureBackend> capture;
    /// Records its sound from `audio`.
    std::unique_ptr<CaptureStreamFactory> streams;
    std::unique_ptr<InputMonitor> input;
    std::unique_ptr<StillCapture> stills;
    std::unique_ptr<CameraBackend> cameras;
    /// Takes its pictures from `cameras`.
    std::unique_ptr<CameraSessionFactory> cameraSessions;
};

} // namespace vantrell
