// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/PipeWireRemote.h"

#include "Platform/CameraError.h"

#include <utility>

namespace vantrell {

std::expected<std::unique_ptr<PipeWireConnection>, PlatformError>
connectToCameras(const PipeWireLoop &loop, const PipeWireRemote &remote, PipeWireConnection::Lost lost) {
    std::optional<UniqueFd> socket;
    if (remote) {
        auto given = remote();
        if (!given)
            return std::unexpected(given.error());
        socket = std::move(*given);
    }
    auto connection = PipeWireConnection::open(loop, std::move(socket), std::move(lost));
    if (!connection)
        return std::unexpected(cameraError(CameraErrorCode::noCameraServer));
    return connection;
}

} // namespace vantrell
