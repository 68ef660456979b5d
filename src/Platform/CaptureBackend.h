// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureStream.h"
#include "Platform/CaptureStreamConfiguration.h"
#include "Platform/Display.h"
#include "Platform/WindowDescription.h"
#include "Support/PlatformError.h"

#include <expected>
#include <memory>
#include <vector>

namespace vantrell {

/// The screen of this desktop session: what there is to capture, and the capturing. Main thread.
class CaptureBackend {
public:
    virtual ~CaptureBackend() = default;

    /// The displays as they are now, the primary one first.
    virtual std::expected<std::vector<Display>, PlatformError> displays() = 0;

    /// Windows of applications that can be captured, the topmost first.
    virtual std::expected<std::vector<WindowDescription>, PlatformError> windows() = 0;

    /// Touches nothing until the stream is started.
    virtual std::unique_ptr<CaptureStream> makeStream(CaptureStreamConfiguration configuration,
                                                      CaptureStreamEvents events) = 0;
};

} // namespace vantrell
