// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera.h"
#include "Platform/CaptureStream.h"
#include "Support/Geometry.h"
#include "Support/Task.h"

#include <QImage>

#include <expected>
#include <filesystem>
#include <functional>
#include <stop_token>

namespace vantrell {

/// A camera that is switched on: its live picture, and one movie file after another of what it sees. Main
/// thread. Destroying it stops it and blocks until its threads have ended.
class CameraSession {
public:
    virtual ~CameraSession() = default;

    /// Switches the camera on; done when its first picture has come. Errors: CameraErrorCode::noCamera,
    /// inUse, accessRefused, noPicture. Once.
    virtual Task<std::expected<void, StreamStartFailure>> open(std::stop_token stop) = 0;

    /// The camera that was opened. Meaningful after `open`.
    virtual const Camera &camera() const = 0;

    /// Begins a movie file, which must not exist yet, of every picture from now on. Of the events,
    /// `firstFrame` and one of the two ends come always, on the session's own threads;
    /// `stoppedWithError` when the camera goes away or the disk fills. One file at a time.
    virtual void startRecording(std::filesystem::path file, CaptureStreamEvents events) = 0;

    /// Asks for the end of the file: its last picture is held up to this moment. Returns at once. Without a
    /// file, or called again, it does nothing.
    virtual void stopRecording() = 0;

    /// Wants the live picture cut to fill a square of that many pixels, or no longer for 0. `changed` is
    /// called on the main thread when there is a newer one, not again until that was taken.
    virtual void showPreview(int squarePixels, std::function<void()> changed) = 0;

    /// The newest live picture; null before the first. Shares its pixels.
    virtual QImage preview() = 0;
};

} // namespace vantrell
