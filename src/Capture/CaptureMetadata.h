// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/InputEvent.h"
#include "Platform/CaptureSource.h"
#include "Support/Geometry.h"
#include "Support/JsonReader.h"

#include <chrono>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

struct DisplayInfo {
    /// Points.
    Size size;
    double scaleFactor = 1;

    bool operator==(const DisplayInfo &) const = default;
};

struct WindowInfo {
    std::optional<std::string> appBundleId;
    std::optional<std::string> appName;
    std::optional<std::string> title;
    /// Points.
    Rect frame;
    bool hasAlpha = false;

    bool operator==(const WindowInfo &) const = default;
};

struct RecordingInfo {
    double fps = 0;
    double durationMs = 0;
    std::vector<InputEvent> events;
    /// Host time of the movie's beginning, seconds: of the first segment's first frame. The camera's movie
    /// beside a screen's lies that much later in it as its anchor is later, pauses or not.
    std::optional<double> anchorHostTime;
    std::optional<bool> cursorInVideo;
    std::optional<bool> autoCamera;
    /// Shared by the movies of one recording, the screen's and the camera's.
    std::optional<std::string> recordingId;

    bool operator==(const RecordingInfo &) const = default;
};

/// The metadata sidecar: what the service needs to zoom on clicks or to draw the cursor as a layer. The JSON
/// keys are the fields' names; absent optionals are left out.
struct CaptureMetadata {
    std::int64_t version = 1;
    /// "recording" or "screenshot".
    std::string type;
    /// ISO 8601, UTC, whole seconds.
    std::string capturedAt;
    /// Written as "window", "display", "region" or, for the layer of a recording that the camera saw,
    /// "camera".
    CaptureKind source = CaptureKind::display;
    DisplayInfo display;
    std::optional<WindowInfo> window;
    std::optional<Rect> region;
    PixelSize pixelSize;
    std::optional<RecordingInfo> recording;

    /// Compact JSON with sorted keys.
    std::string jsonData() const;
    static std::expected<CaptureMetadata, JsonError> fromJson(std::string_view text);

    bool operator==(const CaptureMetadata &) const = default;
};

/// "2026-03-05T14:07:09Z".
std::string iso8601(std::chrono::system_clock::time_point time);

} // namespace vantrell
