// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ReportedDelivery.h"

#include "CommandLine/ApplicationUploads.h"
#include "CommandLine/Interrupted.h"
#include "CommandLine/OpenSession.h"

#include <utility>
#include <variant>

namespace vantrell {

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
    if (UploadRun *const uploads = m_delivery.uploads())
        m_progress.emplace(*uploads);
    co_return std::expected<void, ExitCode>();
}

Task<ExitCode> ReportedDelivery::deliver(CaptureResult capture, bool isPartial, nlohmann::json more,
                                         std::filesystem::path recoverable, std::stop_token stop) {
    const auto delivered = co_await m_delivery.deliver(capture, std::move(recoverable), stop);
    if (m_progress)
        m_progress->clear();
    if (!delivered) {
        if (const auto *const error = std::get_if<PlatformError>(&delivered.error()))
            m_context.reporter.failure(error->description());
        co_return ExitCode::failed;
    }
    const SavedCapture &saved = delivered->saved;
    nlohmann::json json = saved.json(capture, isPartial);
    json.update(more);
    std::string text = saved.file.string();
    ExitCode code = ExitCode::success;
    if (const auto &asset = delivered->asset) {
        if (*asset) {
            json["assetId"] = **asset;
            text += " is uploaded as " + **asset;
        } else {
            // The capture itself is safe: it is told all the same, with what went wrong behind it.
            const auto *const sentence = std::get_if<std::string>(&asset->error());
            const std::string why = sentence ? *sentence : uploadInterrupted;
            json["error"] = why;
            text += " is kept: " + why;
            code = ExitCode::failed;
        }
    }
    m_context.reporter.result(json, text);
    co_return code;
}

} // namespace vantrell
