// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Platform/WindowDescription.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// What is recorded, as it was when the recording was asked for.
struct RecordingTarget {
    /// The display that holds the capture.
    Display display;
    /// The capture area: points from the display's top-left corner; the whole display for a display capture.
    Rect rect;
    /// Present only for a window capture.
    std::optional<WindowDescription> window;
    /// Pixels for each point.
    double scale = 1;
    /// The same area in the desktop's pixels.
    PixelRect source;

    static RecordingTarget wholeDisplay(const Display &display);
    /// An area of the desktop's pixels; `display` holds (the most of) it.
    static RecordingTarget area(const Display &display, const PixelRect &source);
    static RecordingTarget ofWindow(const Display &display, const WindowDescription &window);

    /// "window", "display" or "region".
    const char *kind() const;
};

} // namespace vantrell
