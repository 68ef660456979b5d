// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vantrell {

/// What one recording stretch captures and where it goes.
struct CaptureStreamConfiguration {
    /// The display that holds the capture.
    std::string displayId;
    /// Present for a window capture; the window's content is then taken wherever it is.
    std::optional<std::uint32_t> window;
    /// Part of the desktop, in the desktop's pixels; not used for a window.
    PixelRect source;
    /// The movie's size; what is captured is scaled to fit when a window's size differs from it.
    PixelSize output;
    int maximumFramesPerSecond = 60;
    bool showsCursor = true;
    bool capturesMicrophone = false;
    /// Absent: the default microphone, also when the default changes.
    std::optional<std::string> microphoneId;
    bool capturesSystemAudio = false;
    /// The movie; it must not exist yet.
    std::filesystem::path outputFile;
};

} // namespace vantrell
