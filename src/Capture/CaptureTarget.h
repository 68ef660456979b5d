// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureMetadata.h"
#include "Platform/CaptureSource.h"
#include "Platform/Display.h"
#include "Platform/WindowDescription.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// What is captured, as it was when it was chosen: what a capture's metadata, its name and its events' places
/// are made from. A value type, kept on disk while a recording runs.
struct CaptureTarget {
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

    static CaptureTarget of(const CaptureSource &source);
    static CaptureTarget wholeDisplay(const Display &display);
    /// An area of the desktop's pixels; `display` holds (the most of) it.
    static CaptureTarget area(const Display &display, const PixelRect &source);
    static CaptureTarget ofWindow(const Display &display, const WindowDescription &window);

    /// An area as large as its display counts as the display.
    CaptureKind kind() const;

    /// Where something is now, in points from the corner that the display had.
    Rect rectOf(const Rect &desktopPixels) const;

    /// What the sidecar says of it.
    DisplayInfo displayInfo() const;
    std::optional<WindowInfo> windowInfo() const;
    std::optional<Rect> region() const;
};

} // namespace vantrell
