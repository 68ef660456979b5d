// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireConnection.h"

#include <functional>

namespace vantrell {

/// Where the server with the cameras is: a connected socket that a portal gives, or none for the desktop's
/// own server. Asked for each connection, on the thread that makes it; may block for some seconds.
using PipeWireRemote = std::function<std::expected<std::optional<UniqueFd>, PlatformError>()>;

/// Connects there.
std::expected<std::unique_ptr<PipeWireConnection>, PlatformError>
connectToCameras(const PipeWireLoop &loop, const PipeWireRemote &remote, PipeWireConnection::Lost lost);

} // namespace vantrell
