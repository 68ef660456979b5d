// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureTarget.h"

#include "Platform/DisplayLayout.h"

namespace vantrell {

CaptureTarget CaptureTarget::of(const CaptureSource &source) {
    const CaptureSource::Facts &facts = source.facts();
    const PixelRect place = facts.place.value_or(PixelRect());
    Display display = facts.display.value_or(Display());
    if (!facts.display) {
        // A desktop that tells no displays: the capture is all that there is.
        display.pixels = place;
        display.scale = facts.scale;
        display.frame = toPoints(place, facts.scale);
    }
    if (facts.window)
        return ofWindow(display, *facts.window);
    return facts.kind == CaptureKind::display ? wholeDisplay(display) : area(display, place);
}

CaptureTarget CaptureTarget::wholeDisplay(const Display &display) {
    return {display, {0, 0, display.frame.width, display.frame.height}, {}, display.scale, display.pixels};
}

CaptureTarget CaptureTarget::area(const Display &display, const PixelRect &source) {
    CaptureTarget target{display, {}, {}, display.scale, source};
    target.rect = target.rectOf(toPoints(source, 1));
    return target;
}

CaptureTarget CaptureTarget::ofWindow(const Display &display, const WindowDescription &window) {
    CaptureTarget target{display, {}, window, display.scale, window.pixels};
    target.rect = target.rectOf(toPoints(window.pixels, 1));
    return target;
}

CaptureKind CaptureTarget::kind() const {
    if (window)
        return CaptureKind::window;
    const bool isWhole = rect.width == display.frame.width && rect.height == display.frame.height;
    return isWhole ? CaptureKind::display : CaptureKind::area;
}

Rect CaptureTarget::rectOf(const Rect &desktopPixels) const {
    const Rect points = inPointsOf(display, desktopPixels);
    return {points.x - display.frame.x, points.y - display.frame.y, points.width, points.height};
}

DisplayInfo CaptureTarget::displayInfo() const {
    return {{display.frame.width, display.frame.height}, scale};
}

std::optional<WindowInfo> CaptureTarget::windowInfo() const {
    if (!window)
        return std::nullopt;
    return WindowInfo{window->applicationId, window->applicationName, window->title, rect, false};
}

std::optional<Rect> CaptureTarget::region() const {
    return kind() == CaptureKind::area ? std::optional(rect) : std::nullopt;
}

} // namespace vantrell
