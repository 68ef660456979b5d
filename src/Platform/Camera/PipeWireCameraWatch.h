// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/PipeWireCameraRegistry.h"
#include "Platform/Camera/PipeWireRemote.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantrell {

/// Asks the server for its cameras, the default one first. Blocks for at most four seconds. Errors:
/// CameraErrorCode::noCameraServer, serverFailed, and what the remote says.
std::expected<std::vector<Camera>, PlatformError> listPipeWireCameras(const PipeWireRemote &remote);

/// Watches the cameras of a PipeWire server for as long as it lives, also across the server's restarts.
class PipeWireCameraWatch {
public:
    /// `changed` is called on the watch's own thread, for the first time when it has begun to watch.
    PipeWireCameraWatch(PipeWireRemote remote, std::function<void()> changed);
    ~PipeWireCameraWatch();
    PipeWireCameraWatch(const PipeWireCameraWatch &) = delete;
    PipeWireCameraWatch &operator=(const PipeWireCameraWatch &) = delete;

private:
    void connect();
    void look();

    const PipeWireRemote m_remote;
    const std::function<void()> m_changed;
    PipeWireLoop m_loop;
    std::optional<PipeWireTimer> m_again;
    std::unique_ptr<PipeWireConnection> m_connection;
    std::optional<PipeWireCameraRegistry> m_registry;
    std::optional<std::vector<Camera>> m_known;
};

} // namespace vantrell
