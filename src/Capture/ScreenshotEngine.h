// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureError.h"
#include "Capture/CaptureResult.h"
#include "Capture/CaptureTarget.h"
#include "Capture/ScreenshotError.h"
#include "Platform/Display.h"
#include "Platform/StillCapture.h"
#include "Platform/WindowDescription.h"
#include "Support/Task.h"

#include <chrono>
#include <expected>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// Takes stills, packages captured images as captures and owns the rule by which captures are named.
class ScreenshotEngine {
public:
    using Result = std::expected<CaptureResult, ScreenshotError>;

    /// Takes a still of the target and packages it. Main thread, which is not blocked; `stills` outlives the
    /// task.
    static Task<Result> capture(StillCapture *stills, CaptureTarget target, std::stop_token stop);

    /// Encodes the image as PNG into a new capture file and describes it. Blocks on coding and disk.
    static std::expected<CaptureResult, CaptureError> package(const QImage &image,
                                                              const CaptureTarget &target);

    /// Pixels for each point on that display as it is now; 2 when the display is gone.
    static double scaleFactor(const std::vector<Display> &displays, const std::string &displayId);

    /// What the user sees a capture named: the window's application and title, or "Screen" (a still of a
    /// whole display), "Camera" (what the camera saw) or "Capture" (any other still, and every recording of a
    /// screen: none) with the local date and time.
    static std::string
    captureName(std::optional<CaptureKind> kind, const std::optional<WindowDescription> &window,
                std::chrono::system_clock::time_point now = std::chrono::system_clock::now());
};

} // namespace vantrell
