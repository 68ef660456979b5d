// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ScreenshotCommand.h"

#include "Capture/ScreenshotEngine.h"
#include "CommandLine/CaptureDelivery.h"
#include "CommandLine/TargetResolver.h"

#include <utility>

namespace vantrell {

namespace {

/// The sentence for the user; empty for Cancelled.
struct Sentence {
    std::string operator()(const PlatformError &error) const { return error.description(); }
    std::string operator()(CaptureError error) const { return description(error); }
    std::string operator()(Cancelled) const { return {}; }
};

Task<ScreenshotEngine::Result> capture(StillCapture *stills, RecordingTarget target, std::stop_token stop) {
    if (target.window)
        return ScreenshotEngine::captureWindow(stills, *target.window, target.display, target.scale, stop);
    if (target.source == target.display.pixels)
        return ScreenshotEngine::captureDisplay(stills, target.display, target.scale, stop);
    return ScreenshotEngine::captureArea(stills, target.source, target.display, target.scale, stop);
}

} // namespace

Task<ExitCode> runScreenshot(ScreenshotArguments arguments, CommandContext context, std::stop_token stop) {
    const Platform platform = context.loadPlatform(context.clock);
    const auto target = resolveTarget(arguments.target, *platform.capture);
    if (!target) {
        context.reporter.failure(target.error().description());
        co_return ExitCode::failed;
    }
    CaptureDelivery delivery({arguments.outputFolder, arguments.upload, arguments.projectId}, context);
    if (const auto prepared = co_await delivery.prepare(stop); !prepared)
        co_return prepared.error();
    auto taken = co_await capture(platform.stills.get(), *target, stop);
    if (!taken) {
        context.reporter.failure(std::visit(Sentence{}, taken.error()));
        co_return ExitCode::failed;
    }
    co_return co_await delivery.deliver(std::move(*taken), false, nlohmann::json::object(), {}, stop);
}

} // namespace vantrell
