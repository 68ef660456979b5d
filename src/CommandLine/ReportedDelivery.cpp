// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ReportedDelivery.h"

#include "CommandLine/ApplicationUploads.h"
#include "CommandLine/Interrupted.h"
#include "CommandLine/OpenSession.h"

#include <utility>
#include <variant>

namespace vantrell {

namespace {

/// Adds what became of the upload, and the file to the text. False when it was wanted and did not arrive: the
/// capture itself is safe, so it is told all the same.
bool tell(const CaptureDelivery::Delivered &delivered, nlohmann::json &json, std::string &text) {
    text += delivered.saved.file.string();
    const auto &asset = delivered.asset;
    if (!asset)
        return true;
    if (*asset) {
        json["assetId"] = **asset;
        text += " is uploaded as " + **asset;
        return true;
    }
    const auto *const sentence = std::get_if<std::string>(&asset->error());
    const std::string why = sentence ? *sentence : uploadInterrupted;
    json["error"] = why;
    text += " is kept: " + why;
    return false;
}

} // namespace

ReportedDelivery::ReportedDelivery(CaptureDelivery::Options options, CommandContext context)
    : m_context(std::move(context)), m_delivery(
                                         std::move(options), [this] { return openSession(m_context); },
                                         [this]() -> std::unique_ptr<UploadAgent> {
                                             if (!RunningApplication::isThere())
                                                 return nullptr;
                                             return std::make_unique<ApplicationUploads>(m_context.clock);
                                         },
                                         m_context.clock) {}

Task<std::expected<void, ExitCode>> ReportedDelivery::prepare(std::stop_token stop) {
    const auto prepared = co_await m_delivery.prepare(stop);
    if (!prepared) {
        m_context.reporter.failure(prepared.error().sentence);
        co_return std::unexpected(prepared.error().isNotConnected ? ExitCode::notConnected
                                                                  : ExitCode::failed);
    }
    if (UploadRun *const uploads = m_delivery.uploads()) {
        m_progress.emplace(*uploads);
        m_scope.start(this, &ReportedDelivery::yieldToApplication);
        if (RunningApplication::isThere())
            yieldNow();
    }
    co_return std::expected<void, ExitCode>();
}

Task<> ReportedDelivery::yieldToApplication(std::stop_token stop) {
    if (co_await RunningApplication::arrival(stop))
        yieldNow();
}

void ReportedDelivery::yieldNow() {
    m_progress.reset();
    m_delivery.yieldTo(std::make_unique<ApplicationUploads>(m_context.clock));
}

Task<ExitCode> ReportedDelivery::deliver(CaptureDelivery::Captures captures, bool isPartial,
                                         nlohmann::json more, std::stop_token stop) {
    const auto delivered = co_await m_delivery.deliver(captures, stop);
    if (m_progress)
        m_progress->clear();
    if (!delivered) {
        if (const auto *const error = std::get_if<PlatformError>(&delivered.error()))
            m_context.reporter.failure(error->description());
        co_return ExitCode::failed;
    }
    nlohmann::json json = delivered->main.saved.json(captures.main, isPartial);
    json.update(more);
    std::string text;
    bool hasArrived = tell(delivered->main, json, text);
    if (delivered->camera) {
        nlohmann::json camera = delivered->camera->saved.json(*captures.camera, false);
        camera.erase("partial");
        text += "\n";
        hasArrived = tell(*delivered->camera, camera, text) && hasArrived;
        json["camera"] = std::move(camera);
    } else if (delivered->cameraProblem) {
        json["camera"] = {{"error", delivered->cameraProblem->description()}};
        text += "\n" + delivered->cameraProblem->description();
        hasArrived = false;
    }
    m_context.reporter.result(json, text);
    co_return hasArrived ? ExitCode::success : ExitCode::failed;
}

} // namespace vantrell
