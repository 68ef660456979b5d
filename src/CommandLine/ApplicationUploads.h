// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "CommandLine/ProgressLines.h"
#include "CommandLine/RunningApplication.h"
#include "Session/UploadAgent.h"
#include "Support/TaskScope.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// Uploads through the running application, which has the journal. Main thread.
class ApplicationUploads : public UploadAgent {
public:
    /// The clock outlives it.
    explicit ApplicationUploads(Clock &clock);

    Task<std::expected<void, Refusal>> prepare(std::stop_token stop) override;
    Task<Asset> upload(std::filesystem::path file, std::optional<std::string> projectId,
                       std::stop_token stop) override;
    Task<Asset> awaitUpload(QUuid journalId, std::stop_token stop) override;

    struct Taken {
        std::filesystem::path file;
        /// The journal's id there, or why the file was not taken.
        std::expected<std::string, std::string> id;
    };
    /// Hands files over; they are in the journal when this returns.
    Task<std::expected<std::vector<Taken>, RunningApplication::CallError>>
    add(std::vector<std::filesystem::path> files, std::optional<std::string> projectId, std::stop_token stop);
    /// Tells it to try everything again that waits; the journal's ids of all that is on its way.
    Task<std::expected<std::vector<std::string>, RunningApplication::CallError>> resume(std::stop_token stop);

    /// Waits for these and shows their progress meanwhile; `ended` is told of each.
    Task<std::expected<void, RunningApplication::CallError>>
    await(std::vector<std::string> ids, std::function<void(const RunningApplication::Uploaded &)> ended,
          std::stop_token stop);

private:
    Task<> showProgress(std::vector<std::string> ids, std::stop_token stop);
    Task<> awaitOne(std::string id, std::stop_token stop);

    Clock &m_clock;
    ProgressLines m_lines;
    struct Waiting;
    Waiting *m_waiting = nullptr;
    TaskScope m_scope;
};

} // namespace vantrell
