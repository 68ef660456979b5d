// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "Support/PlatformError.h"

#include <expected>
#include <functional>
#include <optional>

namespace vantrell {

/// Something the user did with the pointer. Keys are never observed.
struct PointerEvent {
    enum class Kind { leftDown = 1, leftUp, rightDown, rightUp, scroll, moved };
    Kind kind;
    /// Host seconds at which it happened.
    double hostTime = 0;
    /// Scroll only: the wheel's or finger's own steps; both zero means that nothing moved.
    double deltaX = 0;
    double deltaY = 0;
    /// Scroll only: inertia after the fingers lifted.
    bool isMomentum = false;
};

/// Port: pointer activity anywhere on the desktop. Main thread, handlers included.
class InputMonitor {
public:
    virtual ~InputMonitor() = default;

    /// Starts to report. `moved` says only that the pointer moved since it was last reported; it may be
    /// coalesced and comes at the device's own rate, never while the pointer rests.
    virtual std::expected<void, PlatformError> start(std::function<void(const PointerEvent &)> handler) = 0;
    virtual void stop() = 0;

    /// Clicks and scrolls are among what it reports.
    virtual bool seesClicks() const { return true; }

    /// Where the pointer is now, in the desktop's pixels. None when that cannot be told.
    virtual std::optional<Point> pointerLocation() = 0;
};

} // namespace vantrell
