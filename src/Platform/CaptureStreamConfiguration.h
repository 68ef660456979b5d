// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CursorMode.h"
#include "Support/Geometry.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vantrell {

/// How one recording stretch is made and where it goes.
struct CaptureStreamConfiguration {
    /// The movie's size; absent: that of the first picture. Pictures of other sizes are fitted into it.
    std::optional<PixelSize> output;
    int maximumFramesPerSecond = 60;
    CursorMode cursor = CursorMode::inPicture;
    bool capturesMicrophone = false;
    /// Absent: the default microphone, also when the default changes.
    std::optional<std::string> microphoneId;
    bool capturesSystemAudio = false;
    /// The movie; it must not exist yet.
    std::filesystem::path outputFile;
};

} // namespace vantrell
