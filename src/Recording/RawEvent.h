// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/InputEvent.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// An input event as it was observed, before it is mapped into the recording.
struct RawEvent {
    /// Seconds, the clock of frames and samples.
    double hostTime = 0;
    /// Never `exit`: only the mapping knows the area.
    InputEvent::Kind kind = InputEvent::Kind::move;
    /// Points, bottom-left desktop coordinates.
    Point location;
    /// The capture area when the event happened, when it can move: points from the display's top-left corner.
    std::optional<Rect> captureRect;

    bool operator==(const RawEvent &) const = default;
};

} // namespace vantrell
