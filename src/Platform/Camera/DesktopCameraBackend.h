// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/PipeWireRemote.h"
#include "Platform/Camera/V4l2Kernel.h"
#include "Platform/CameraBackend.h"

#include <QDBusConnection>

#include <functional>
#include <memory>

namespace vantrell {

/// The cameras of a Linux desktop: those of its PipeWire server, through the portal where the program runs in
/// a sandbox, or the kernel's own where no server shows any. Never both, so that no camera is there twice.
class DesktopCameraBackend final : public CameraBackend {
public:
    struct Access {
        PipeWireRemote remote;
        /// Asks the user; none where nobody has to be asked.
        std::function<Task<bool>(std::stop_token stop)> ask;
        /// None where the kernel's devices are out of reach.
        std::shared_ptr<V4l2Kernel> kernel;
    };
    explicit DesktopCameraBackend(Access access);

    /// As this process finds its desktop.
    static std::unique_ptr<DesktopCameraBackend> create();
    /// Through the portal, whose user is asked.
    static std::unique_ptr<DesktopCameraBackend> throughPortal(const QDBusConnection &bus);

    Task<std::expected<std::vector<Camera>, PlatformError>> cameras(std::stop_token stop) override;
    Observation observeCameras(std::function<void()> changed) override;
    Task<bool> requestAccess(std::stop_token stop) override;
    std::unique_ptr<CameraSource> makeSource(std::optional<std::string> id) override;

private:
    const Access m_access;
};

} // namespace vantrell
