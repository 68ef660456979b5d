// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/DesktopCameraBackend.h"

#include "Platform/Camera/CameraPortal.h"
#include "Platform/Camera/DesktopCameraSource.h"
#include "Platform/Camera/PipeWireCameraWatch.h"
#include "Platform/Camera/V4l2CameraList.h"
#include "Platform/CameraError.h"
#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"
#include "Support/Sandbox.h"

#include <optional>
#include <utility>

namespace vantrell {

namespace {

using Listed = std::expected<std::vector<Camera>, PlatformError>;

Listed listCameras(const PipeWireRemote &remote, V4l2Kernel *kernel) {
    Listed served = listPipeWireCameras(remote);
    if (!kernel || (served && !served->empty()))
        return served;
    std::vector<Camera> cameras;
    for (const V4l2Camera &found : listV4l2Cameras(*kernel).cameras)
        cameras.push_back(found.camera);
    return cameras;
}

/// Both watches, whose threads call the main one.
class CameraObserver : public std::enable_shared_from_this<CameraObserver> {
public:
    explicit CameraObserver(std::function<void()> changed)
        : m_loop(EventLoop::current()), m_changed(std::move(changed)) {}

    void watch(const PipeWireRemote &remote, const std::shared_ptr<V4l2Kernel> &kernel) {
        const auto tell = [loop = m_loop, weak = weak_from_this()] {
            loop.post([weak] {
                if (const auto observer = weak.lock())
                    observer->m_changed();
            });
        };
        m_served.emplace(remote, tell);
        m_kernel = kernel;
        if (kernel)
            m_devices.emplace(*kernel, tell);
    }

private:
    const EventLoop m_loop;
    const std::function<void()> m_changed;
    std::optional<PipeWireCameraWatch> m_served;
    std::shared_ptr<V4l2Kernel> m_kernel;
    std::optional<V4l2Watch> m_devices;
};

} // namespace

DesktopCameraBackend::DesktopCameraBackend(Access access) : m_access(std::move(access)) {}

std::unique_ptr<DesktopCameraBackend> DesktopCameraBackend::create() {
    if (isSandboxed())
        return throughPortal(QDBusConnection::sessionBus());
    return std::make_unique<DesktopCameraBackend>(
        Access{.remote = {}, .ask = {}, .kernel = std::make_shared<V4l2Kernel>()});
}

std::unique_ptr<DesktopCameraBackend> DesktopCameraBackend::throughPortal(const QDBusConnection &bus) {
    const auto portal = std::make_shared<CameraPortal>(bus);
    return std::make_unique<DesktopCameraBackend>(
        Access{.remote = portal->remote(),
               .ask = [portal](std::stop_token stop) { return portal->requestAccess(stop); },
               .kernel = nullptr});
}

Task<Listed> DesktopCameraBackend::cameras(std::stop_token stop) {
    auto listed = co_await runBlocking(
        [remote = m_access.remote, kernel = m_access.kernel] { return listCameras(remote, kernel.get()); },
        stop);
    if (!listed) {
        const auto *const error = std::get_if<PlatformError>(&listed.error());
        // Cancelled: nobody reads it.
        co_return std::unexpected(error ? *error : cameraError(CameraErrorCode::serverFailed));
    }
    co_return std::move(*listed);
}

Observation DesktopCameraBackend::observeCameras(std::function<void()> changed) {
    const auto observer = std::make_shared<CameraObserver>(std::move(changed));
    observer->watch(m_access.remote, m_access.kernel);
    return observer;
}

Task<bool> DesktopCameraBackend::requestAccess(std::stop_token stop) {
    if (!m_access.ask)
        co_return true;
    co_return co_await m_access.ask(stop);
}

std::unique_ptr<CameraSource> DesktopCameraBackend::makeSource(std::optional<std::string> id) {
    return std::make_unique<DesktopCameraSource>(m_access.remote, m_access.kernel, std::move(id));
}

} // namespace vantrell
