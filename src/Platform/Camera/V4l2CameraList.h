// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera.h"
#include "Platform/Camera/V4l2Kernel.h"
#include "Platform/CameraError.h"
#include "Support/UniqueFd.h"
#include "Support/WorkerThread.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

struct V4l2Camera {
    Camera camera;
    /// "/dev/video0" for now.
    std::string device;
};

struct V4l2CameraList {
    /// Each camera once, the default one first.
    std::vector<V4l2Camera> cameras;
    /// There are devices that this user may not open.
    bool isRefused = false;
};

/// The cameras that the kernel has. Blocks for some milliseconds.
V4l2CameraList listV4l2Cameras(V4l2Kernel &kernel);

/// Watches devices come and go for as long as it lives.
class V4l2Watch {
public:
    /// `changed` is called on the watch's own thread. The kernel outlives it.
    V4l2Watch(const V4l2Kernel &kernel, std::function<void()> changed);
    ~V4l2Watch();
    V4l2Watch(const V4l2Watch &) = delete;
    V4l2Watch &operator=(const V4l2Watch &) = delete;

private:
    void run();

    const std::function<void()> m_changed;
    UniqueFd m_end;
    UniqueFd m_notifications;
    WorkerThread m_thread;
};

} // namespace vantrell
