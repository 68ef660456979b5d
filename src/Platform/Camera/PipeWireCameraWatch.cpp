// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/PipeWireCameraWatch.h"

#include "Platform/CameraError.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds listPatience{4};
constexpr std::chrono::seconds reconnectInterval{1};

std::vector<Camera> camerasOf(const PipeWireCameraRegistry &registry) {
    std::vector<Camera> cameras;
    for (const auto &found : registry.cameras())
        cameras.push_back(found.camera);
    return cameras;
}

} // namespace

std::expected<std::vector<Camera>, PlatformError> listPipeWireCameras(const PipeWireRemote &remote) {
    std::mutex mutex;
    std::condition_variable answered;
    std::optional<std::expected<std::vector<Camera>, PlatformError>> result;
    const auto answer = [&](std::expected<std::vector<Camera>, PlatformError> value) {
        const std::scoped_lock lock(mutex);
        if (!result)
            result = std::move(value);
        answered.notify_all();
    };
    PipeWireLoop loop("camera list");
    std::unique_ptr<PipeWireConnection> connection;
    std::optional<PipeWireCameraRegistry> registry;
    {
        const PipeWireLoop::Lock lock(loop);
        auto opened = connectToCameras(
            loop, remote, [&] { answer(std::unexpected(cameraError(CameraErrorCode::serverFailed))); });
        if (!opened)
            return std::unexpected(opened.error());
        connection = std::move(*opened);
        registry.emplace(*connection, [&] { answer(camerasOf(*registry)); });
    }
    {
        std::unique_lock lock(mutex);
        answered.wait_for(lock, listPatience, [&] { return result.has_value(); });
    }
    const PipeWireLoop::Lock lock(loop);
    registry.reset();
    connection.reset();
    return result.value_or(std::unexpected(cameraError(CameraErrorCode::serverFailed)));
}

PipeWireCameraWatch::PipeWireCameraWatch(PipeWireRemote remote, std::function<void()> changed)
    : m_remote(std::move(remote)), m_changed(std::move(changed)), m_loop("camera watch") {
    const PipeWireLoop::Lock lock(m_loop);
    m_again.emplace(m_loop, [this] {
        m_registry.reset();
        m_connection.reset();
        connect();
    });
    m_again->start();
}

PipeWireCameraWatch::~PipeWireCameraWatch() {
    const PipeWireLoop::Lock lock(m_loop);
    m_registry.reset();
    m_connection.reset();
    m_again.reset();
}

void PipeWireCameraWatch::connect() {
    const auto nobody = [this] {
        if (std::exchange(m_known, std::vector<Camera>()).value_or(std::vector<Camera>()) !=
            std::vector<Camera>())
            m_changed();
        m_again->start(reconnectInterval);
    };
    auto opened = connectToCameras(m_loop, m_remote, nobody);
    if (!opened)
        return nobody();
    m_connection = std::move(*opened);
    m_registry.emplace(*m_connection, [this] { look(); });
}

void PipeWireCameraWatch::look() {
    auto cameras = camerasOf(*m_registry);
    // The first time too: what was listed before the watch began may have changed since.
    if (std::exchange(m_known, cameras) != cameras)
        m_changed();
}

} // namespace vantrell
