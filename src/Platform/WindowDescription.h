// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vantrell {

/// One window of another application, as it was when it was listed.
struct WindowDescription {
    /// The window system's number for it.
    std::uint32_t id = 0;
    /// The owning application's id (desktop file or class) and name; absent when unknown.
    std::optional<std::string> applicationId;
    std::optional<std::string> applicationName;
    /// Never logged.
    std::optional<std::string> title;
    /// Without the window manager's frame, in points with top-left origin.
    Rect frame;
    /// The same in pixels.
    PixelRect pixels;

    bool operator==(const WindowDescription &) const = default;
};

} // namespace vantrell
