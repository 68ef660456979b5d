// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/TargetResolver.h"

#include "Platform/DisplayLayout.h"
#include "Platform/ScreenError.h"

#include <algorithm>

namespace vantrell {

namespace {

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
    return RecordingTarget::ofWindow(displayHolding(displays, window->pixels), *window);
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
        const auto area = areaOnDisplays(*displays, *arguments.area);
        if (!area)
            return std::unexpected(area.error());
        return RecordingTarget::area(displayHolding(*displays, *area), *area);
    }
    if (!arguments.displayId)
        return RecordingTarget::wholeDisplay(displays->front());
    const auto display = std::ranges::find(*displays, *arguments.displayId, &Display::id);
    if (display == displays->end())
        return refusal(ScreenErrorCode::noSuchDisplay, "There is no display " + *arguments.displayId);
    return RecordingTarget::wholeDisplay(*display);
}

} // namespace vantrell
