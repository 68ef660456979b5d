// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureBackend.h"
#include "Platform/InputMonitor.h"

#include <functional>
#include <memory>
#include <optional>

namespace vantrell {

/// The desktop session behind the ports. What this desktop lacks is stood in for by null backends, which
/// carry the sentence for the user.
struct Platform {
    std::unique_ptr<CaptureBackend> capture;
    std::unique_ptr<InputMonitor> input;
    std::function<std::optional<Rect>(std::uint32_t windowId)> windowBounds;
};

/// Picks the backends by the session's type; the environment variable VANTRELL_BACKEND ("x11" or "null")
/// forces them. The only place that knows backends by name. Main thread.
Platform loadPlatform();

} // namespace vantrell
