// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ScreenshotCommand.h"

#include "Capture/ScreenshotEngine.h"
#include "CommandLine/ReportedDelivery.h"

#include <utility>

namespace vantrell {

namespace {

/// The sentence for the user; empty for Cancelled.
struct Sentence {
    std::string operator()(const PlatformError &error) const { return error.description(); }
    std::string operator()(CaptureError error) const { return description(error); }
    std::string operator()(Cancelled) const { return {}; }
};

} // namespace

Task<ExitCode> runScreenshot(ScreenshotArguments arguments, CommandContext context, std::stop_token stop) {
    const Platform platform = context.loadPlatform(context.clock);
    CaptureRequest target = arguments.target;
    target.isForStill = true;
    const auto chosen = co_await platform.capture->choose(std::move(target), stop);
    if (!chosen) {
        context.reporter.failure(std::visit(Sentence{}, chosen.error()));
        co_return ExitCode::failed;
    }
    ReportedDelivery delivery({arguments.outputFolder, arguments.upload, arguments.projectId}, context);
    if (const auto prepared = co_await delivery.prepare(stop); !prepared)
        co_return prepared.error();
    auto taken =
        co_await ScreenshotEngine::capture(platform.stills.get(), CaptureTarget::of(*chosen->source), stop);
    if (!taken) {
        context.reporter.failure(std::visit(Sentence{}, taken.error()));
        co_return ExitCode::failed;
    }
    CaptureDelivery::Captures captures;
    captures.main = std::move(*taken);
    co_return co_await delivery.deliver(std::move(captures), false, nlohmann::json::object(), stop);
}

} // namespace vantrell
