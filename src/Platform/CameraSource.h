// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera.h"
#include "Support/Geometry.h"
#include "Support/PlatformError.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace vantrell {

/// What a camera's pictures are made of.
enum class CameraFormat { yuyv = 1, nv12, i420, mjpeg, h264 };

/// One picture of a camera. Borrowed for the length of the call.
struct CameraFrame {
    PixelSize size;
    CameraFormat format = CameraFormat::yuyv;
    /// Packed formats: the first alone. NV12 uses two, I420 three.
    struct Plane {
        std::span<const std::uint8_t> data;
        /// Bytes a row; 0 for compressed pictures.
        std::ptrdiff_t stride = 0;
    };
    std::array<Plane, 3> planes;
    /// Host seconds at which it was taken: the sensor's time where the driver tells it, else that of arrival.
    /// Rises from frame to frame.
    double hostTime = 0;
};

enum class CameraSourceState {
    /// Pictures come.
    running = 1,
    /// The device went away or stopped; it may come back.
    deviceMissing,
};

/// Called on the source's own thread, one call at a time. Unset ones are skipped.
struct CameraSourceHandlers {
    std::function<void(const CameraFrame &frame)> frame;
    /// The first state comes within five seconds of the start, then every change. The error says why a camera
    /// is missing: CameraErrorCode.
    std::function<void(CameraSourceState state, std::optional<PlatformError> error)> stateChanged;
};

/// Port: one stream of pictures from one camera. Thread-bound but for the handlers.
class CameraSource {
public:
    /// Ends the stream; no handler runs afterwards. Blocks for the length of a handler at most.
    virtual ~CameraSource() = default;

    /// Returns at once. Call it once.
    virtual void start(CameraSourceHandlers handlers) = 0;

    /// The camera whose pictures come. Meaningful once it is running; thread-safe.
    virtual Camera camera() const = 0;
};

} // namespace vantrell
