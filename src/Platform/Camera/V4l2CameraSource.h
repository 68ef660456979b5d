// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/CameraClock.h"
#include "Platform/Camera/V4l2Device.h"
#include "Platform/CameraSource.h"
#include "Support/UniqueFd.h"
#include "Support/WorkerThread.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace vantrell {

/// A camera of the kernel's, without any server between, with a thread of its own. While its device is
/// missing it is looked for every second; the first camera that ran is the one.
class V4l2CameraSource final : public CameraSource {
public:
    /// The kernel outlives it.
    V4l2CameraSource(V4l2Kernel &kernel, std::optional<std::string> id);
    ~V4l2CameraSource() override;

    void start(CameraSourceHandlers handlers) override;
    Camera camera() const override;

private:
    void run();
    CameraErrorCode runDevice();
    std::expected<V4l2Device, CameraErrorCode> findDevice();
    /// Why it ended; nothing when the signal has another shape now.
    std::optional<CameraErrorCode> takePictures(V4l2Device &device);
    bool takeOne(V4l2Device &device, const V4l2Device::Picture &picture);
    void report(CameraSourceState state, std::optional<PlatformError> error = std::nullopt);
    /// Until the descriptor is ready, the end, or the time is over.
    enum class Wait { ready, event, ended, late };
    Wait wait(int fd, std::chrono::milliseconds patience) const;

    V4l2Kernel &m_kernel;
    const std::optional<std::string> m_wantedId;
    CameraSourceHandlers m_handlers;
    // The source's thread's.
    CameraClock m_clock;
    bool m_hasRun = false;
    std::optional<CameraSourceState> m_reported;

    mutable std::mutex m_mutex;
    Camera m_camera;

    UniqueFd m_end;
    WorkerThread m_thread;
};

} // namespace vantrell
