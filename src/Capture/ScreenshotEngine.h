// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureError.h"
#include "Capture/CaptureResult.h"
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

    /// Takes a still of a window, of a whole display, or of an area of the desktop's pixels, and packages it.
    /// `on` is the display that holds it. Main thread, which is not blocked; `stills` outlives the task.
    static Task<Result> captureWindow(StillCapture *stills, WindowDescription window, Display on,
                                      double scale, std::stop_token stop);
    static Task<Result> captureDisplay(StillCapture *stills, Display display, double scale,
                                       std::stop_token stop);
    static Task<Result> captureArea(StillCapture *stills, PixelRect area, Display on, double scale,
                                    std::stop_token stop);

    /// Encodes the image as PNG into a new capture file and describes it. Blocks on coding and disk.
    /// `source` is "window", "display" or "region".
    static std::expected<CaptureResult, CaptureError> package(const QImage &image, const std::string &source,
                                                              const Display &display, double scale,
                                                              const std::optional<WindowInfo> &window,
                                                              const std::optional<Rect> &region);

    /// Pixels for each point on that display as it is now; 2 when the display is gone.
    static double scaleFactor(const std::vector<Display> &displays, const std::string &displayId);

    /// The display name of a capture: the window's application and title, or "Screen"/"Capture" with the
    /// local date and time.
    static std::string
    captureName(const std::string &source, const std::optional<WindowInfo> &window,
                std::chrono::system_clock::time_point now = std::chrono::system_clock::now());

    /// What the metadata says of a window that is captured as `captureRect` (points).
    static WindowInfo windowInfo(const WindowDescription &window, const Rect &captureRect);
};

} // namespace vantrell
