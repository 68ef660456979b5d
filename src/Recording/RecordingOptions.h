// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureTarget.h"

#include <optional>
#include <string>

namespace vantrell {

/// What is recorded and how; fixed for the recording.
struct RecordingOptions {
    CaptureTarget target;
    bool micEnabled = false;
    /// Absent: the default microphone.
    std::optional<std::string> micDeviceId;
    bool systemAudioEnabled = false;
    /// The pointer is left out of the picture; its path is in the sidecar.
    bool separateCursor = true;
    bool autoCamera = false;
    /// Set where a camera records beside the screen: both sidecars carry it.
    std::optional<std::string> recordingId;
    double fps = 60;
};

/// For a recording with a camera.
std::string newRecordingId();

} // namespace vantrell
