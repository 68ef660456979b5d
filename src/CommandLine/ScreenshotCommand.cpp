// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ScreenshotCommand.h"

#include "Capture/ScreenshotEngine.h"
#include "CommandLine/ReportedDelivery.h"

#include <utility>

namespace vantrell {

namespace {

/// The user has refused, in the desktop's own dialog.
ExitCode fail(const Reporter &reporter, Cancelled) {
    reporter.failure("Cancelled before anything was captured");
    return ExitCode::nothingRecorded;
}
ExitCode fail(const Reporter &reporter, const PlatformError &error) {
    reporter.failure(error.description());
    return ExitCode::failed;
}
ExitCode fail(const Reporter &reporter, CaptureError error) {
    reporter.failure(description(error));
    return ExitCode::failed;
}

} // namespace

Task<ExitCode> runScreenshot(ScreenshotArguments arguments, CommandContext context, std::stop_token stop) {
    const Platform platform = context.loadPlatform(context.clock);
    CaptureRequest target = arguments.target;
    target.isForStill = true;
    const auto chosen = co_await platform.capture->choose(std::move(target), stop);
    const auto failed = [&context](const auto &error) { return fail(context.reporter, error); };
    if (!chosen)
        co_return std::visit(failed, chosen.error());
    ReportedDelivery delivery({arguments.outputFolder, arguments.upload, arguments.projectId}, context);
    if (const auto prepared = co_await delivery.prepare(stop); !prepared)
        co_return prepared.error();
    auto taken =
        co_await ScreenshotEngine::capture(platform.stills.get(), CaptureTarget::of(*chosen->source), stop);
    if (!taken)
        co_return std::visit(failed, taken.error());
    CaptureDelivery::Captures captures;
    captures.main = std::move(*taken);
    co_return co_await delivery.deliver(std::move(captures), false, nlohmann::json::object(), stop);
}

} // namespace vantrell
