// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "CommandLine/UploadProgress.h"
#include "Session/CaptureDelivery.h"
#include "Support/TaskScope.h"

#include <nlohmann/json.hpp>

#include <expected>
#include <optional>
#include <stop_token>

namespace vantrell {

/// Delivers a command's captures and tells its user what became of them. Main thread. Failures are reported
/// here; the exit code says which.
class ReportedDelivery {
public:
    ReportedDelivery(CaptureDelivery::Options options, CommandContext context);

    Task<std::expected<void, ExitCode>> prepare(std::stop_token stop);

    /// `more` is added to the main capture's JSON, in which the camera's is an object of its own.
    Task<ExitCode> deliver(CaptureDelivery::Captures captures, bool isPartial, nlohmann::json more,
                           std::stop_token stop);

    /// Ends waiting for the upload, which can be resumed later.
    void interrupt() { m_delivery.interrupt(); }

private:
    /// An application that is started uploads from then on.
    Task<> yieldToApplication(std::stop_token stop);
    void yieldNow();

    const CommandContext m_context;
    CaptureDelivery m_delivery;
    std::optional<UploadProgress> m_progress;
    TaskScope m_scope;
};

} // namespace vantrell
