// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/TargetResolver.h"

#include "Platform/ScreenError.h"

#include <algorithm>

namespace vantrell {

namespace {

std::int64_t sharedPixels(const Display &display, const PixelRect &area) {
    const PixelRect shared = intersection(display.pixels, area);
    return std::int64_t(shared.width) * shared.height;
}

/// The display that shows the most of the area; none when no display shows any of it.
const Display *displayOf(const std::vector<Display> &displays, const PixelRect &area) {
    const auto most = std::ranges::max_element(
        displays, {}, [&area](const Display &display) { return sharedPixels(display, area); });
    return most != displays.end() && sharedPixels(*most, area) > 0 ? &*most : nullptr;
}

std::unexpected<PlatformError> refusal(ScreenErrorCode code, std::string sentence) {
    return std::unexpected(screenError(code, std::move(sentence)));
}

std::expected<RecordingTarget, PlatformError> resolveWindow(std::uint32_t id, CaptureBackend &backend,
                                                            const std::vector<Display> &displays) {
    const auto windows = backend.windows();
    if (!windows)
        return std::unexpected(windows.error());
    const auto window = std::ranges::find(*windows, id, &WindowDescription::id);
    if (window == windows->end())
        return refusal(ScreenErrorCode::noSuchWindow, "There is no window " + std::to_string(id));
    const Display *display = displayOf(displays, window->pixels);
    return RecordingTarget::ofWindow(display ? *display : displays.front(), *window);
}

} // namespace

std::expected<RecordingTarget, PlatformError> resolveTarget(const TargetArguments &arguments,
                                                            CaptureBackend &backend) {
    const auto displays = backend.displays();
    if (!displays)
        return std::unexpected(displays.error());
    if (displays->empty())
        return refusal(ScreenErrorCode::noSuchDisplay, "There is no display");
    if (arguments.windowId)
        return resolveWindow(*arguments.windowId, backend, *displays);
    if (arguments.area) {
        const Display *display = displayOf(*displays, *arguments.area);
        if (!display)
            return refusal(ScreenErrorCode::badArea, "The area lies outside every display");
        return RecordingTarget::area(*display, *arguments.area);
    }
    if (!arguments.displayId)
        return RecordingTarget::wholeDisplay(displays->front());
    const auto display = std::ranges::find(*displays, *arguments.displayId, &Display::id);
    if (display == displays->end())
        return refusal(ScreenErrorCode::noSuchDisplay, "There is no display " + *arguments.displayId);
    return RecordingTarget::wholeDisplay(*display);
}

} // namespace vantrell
