// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingTarget.h"

namespace vantrell {

RecordingTarget RecordingTarget::wholeDisplay(const Display &display) {
    return {display, {0, 0, display.frame.width, display.frame.height}, {}, display.scale, display.pixels};
}

RecordingTarget RecordingTarget::area(const Display &display, const PixelRect &source) {
    const PixelRect local{source.x - display.pixels.x, source.y - display.pixels.y, source.width,
                          source.height};
    return {display, toPoints(local, display.scale), {}, display.scale, source};
}

RecordingTarget RecordingTarget::ofWindow(const Display &display, const WindowDescription &window) {
    const Rect rect{window.frame.x - display.frame.x, window.frame.y - display.frame.y, window.frame.width,
                    window.frame.height};
    return {display, rect, window, display.scale, window.pixels};
}

const char *RecordingTarget::kind() const {
    if (window)
        return "window";
    return rect.width == display.frame.width && rect.height == display.frame.height ? "display" : "region";
}

} // namespace vantrell
