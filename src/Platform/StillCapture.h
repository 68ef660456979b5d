// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/Geometry.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <QImage>

#include <cstdint>
#include <expected>
#include <stop_token>
#include <variant>

namespace vantrell {

/// Port: single pictures of what is on the screen, never with the pointer or the application's own panels.
/// Main thread, which is not blocked.
class StillCapture {
public:
    using Error = std::variant<PlatformError, Cancelled>;
    using Result = std::expected<QImage, Error>;

    virtual ~StillCapture() = default;

    /// Parts of the screen can be looked at as often as wanted: the user is not asked, nothing flashes.
    virtual bool canWatch() const { return true; }

    /// A window's whole content, also where others cover it: with its transparency, without the window
    /// manager's frame and without a shadow that the application draws itself.
    virtual Task<Result> captureWindow(std::uint32_t window, std::stop_token stop) = 0;

    /// A part of the desktop, in the desktop's pixels; may lie on several displays. What belongs to no
    /// display is black. Fails with `badArea` when the area is empty or touches no display.
    virtual Task<Result> captureArea(PixelRect area, std::stop_token stop) = 0;
};

} // namespace vantrell
