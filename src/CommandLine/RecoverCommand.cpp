// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/RecoverCommand.h"

#include "Capture/CaptureStorage.h"
#include "CommandLine/ReportedDelivery.h"
#include "CommandLine/RunningApplication.h"
#include "Recording/RecordingRecovery.h"
#include "Support/BlockingWork.h"

#include <nlohmann/json.hpp>

namespace vantrell {

Task<ExitCode> runRecover(RecoverArguments, CommandContext context, std::stop_token stop) {
    // The application makes cards of what there is, and uploads it.
    if (RunningApplication::isThere())
        if (co_await RunningApplication::call("Recover", {}, stop)) {
            context.reporter.note("The running application recovers what there is: see its shelf");
            co_return ExitCode::success;
        }
    ReportedDelivery delivery({}, context);
    if (const auto prepared = co_await delivery.prepare(stop); !prepared)
        co_return prepared.error();
    const auto found =
        co_await runBlocking([] { return RecordingRecovery::abandoned(CaptureStorage::directory()); }, stop);
    if (!found)
        co_return ExitCode::failed;
    bool isAnyRecovered = false;
    ExitCode code = ExitCode::success;
    for (const std::filesystem::path &what : *found) {
        auto recovered = co_await runBlocking(
            [what, now = context.clock.wallNow()] { return RecordingRecovery::recover(what, now); }, stop);
        if (!recovered && std::holds_alternative<Cancelled>(recovered.error()))
            co_return ExitCode::failed;
        if (!recovered) {
            context.reporter.failure(description(recovered.error()));
            code = ExitCode::failed;
            continue;
        }
        if (!recovered->screen && !recovered->camera)
            continue;
        isAnyRecovered = true;
        CaptureDelivery::Captures captures;
        captures.recoverable = what;
        if (recovered->screen) {
            captures.main = std::move(*recovered->screen);
            captures.camera = std::move(recovered->camera);
        } else {
            captures.main = std::move(*recovered->camera);
            captures.mainLayer = RecordingLayer::camera;
        }
        const ExitCode delivered =
            co_await delivery.deliver(std::move(captures), false, nlohmann::json{{"recovered", true}}, stop);
        if (delivered != ExitCode::success)
            code = delivered;
    }
    if (!isAnyRecovered && code == ExitCode::success)
        context.reporter.note("Nothing to recover");
    co_return code;
}

} // namespace vantrell
