// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioBackend.h"
#include "Platform/CaptureBackend.h"
#include "Platform/InputMonitor.h"
#include "Platform/StillCapture.h"

#include <functional>
#include <memory>
#include <optional>

namespace vantrell {

/// The desktop session behind the ports. What this desktop lacks is stood in for by null backends, which
/// carry the sentence for the user.
struct Platform {
    std::unique_ptr<AudioBackend> audio;
    /// Records its sound from `audio`.
    std::unique_ptr<CaptureBackend> capture;
    std::unique_ptr<InputMonitor> input;
    std::unique_ptr<StillCapture> stills;
    /// Where a window is now, in the desktop's pixels. Lives as long as `capture`.
    std::function<std::optional<PixelRect>(std::uint32_t windowId)> windowBounds;
};

} // namespace vantrell
