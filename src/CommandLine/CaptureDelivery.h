// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "CommandLine/UploadRun.h"
#include "Session/SavedCapture.h"
#include "Session/ServiceSession.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <nlohmann/json.hpp>

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Where a command's capture goes: into a folder, to the service when asked for, and onto standard output.
/// Main thread. Failures are reported here; the exit code says which.
class CaptureDelivery {
public:
    struct Options {
        /// Absent: captures stay in the captures folder.
        std::optional<std::filesystem::path> folder;
        bool upload = false;
        std::optional<std::string> projectId;
    };

    CaptureDelivery(Options options, CommandContext context);

    /// Looks before anything is captured, so that an unwritable folder, a wrong address or a missing
    /// connection costs no work.
    Task<std::expected<void, ExitCode>> prepare(std::stop_token stop);

    /// `more` is added to the capture's JSON. `recoverable` is what would recover the capture after a crash:
    /// it is forgotten once the capture has its place and its side files.
    Task<ExitCode> deliver(CaptureResult capture, bool isPartial, nlohmann::json more,
                           std::filesystem::path recoverable, std::stop_token stop);

    /// Ends waiting for the upload, which can be resumed later.
    void interrupt();

private:
    Task<> fetchLimits(std::stop_token stop);
    Task<std::expected<std::string, std::string>> upload(CaptureResult capture, SavedCapture saved,
                                                         std::stop_token stop);

    const Options m_options;
    const CommandContext m_context;
    /// Present when captures are uploaded.
    std::unique_ptr<ServiceSession> m_session;
    std::unique_ptr<UploadRun> m_uploads;
    /// Ends what is waited for before the upload.
    std::stop_source m_choosing;
    TaskScope m_scope;
};

} // namespace vantrell
