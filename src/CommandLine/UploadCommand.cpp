// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/UploadCommand.h"

#include "CommandLine/OpenSession.h"
#include "CommandLine/UnixSignals.h"
#include "CommandLine/UploadRun.h"
#include "Session/CaptureFile.h"
#include "Support/BlockingWork.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <set>

namespace vantrell {

namespace {

/// One run of `upload` or `resume`.
class UploadCommand {
public:
    explicit UploadCommand(CommandContext context)
        : m_context(std::move(context)), m_signals({SIGINT, SIGTERM}, [this](int) { onSignal(); }) {}

    Task<ExitCode> upload(UploadArguments arguments, std::stop_token stop);
    Task<ExitCode> resume(std::stop_token stop);

private:
    /// The account's connection and the project to upload to, or how the command ends.
    Task<std::expected<std::string, ExitCode>> begin(std::optional<std::string> project,
                                                     std::stop_token stop);
    Task<ExitCode> finish(std::stop_token stop);
    void onSignal() {
        m_interrupted = true;
        if (m_run)
            m_run->interrupt();
    }
    void report(const UploadEnd &end);
    ExitCode fail(const std::string &sentence, ExitCode code = ExitCode::failed) {
        m_context.reporter.failure(sentence);
        return m_worst = code;
    }

    const CommandContext m_context;
    UnixSignals m_signals;
    bool m_interrupted = false;
    ExitCode m_worst = ExitCode::success;
    /// What `upload` was given; what else arrives meanwhile is not reported.
    std::set<QUuid> m_asked;
    std::unique_ptr<ServiceSession> m_session;
    std::unique_ptr<UploadRun> m_run;
};

Task<std::expected<std::string, ExitCode>> UploadCommand::begin(std::optional<std::string> project,
                                                                std::stop_token stop) {
    auto session = openSession(m_context);
    if (!session)
        co_return std::unexpected(fail(session.error()));
    m_session = std::move(*session);
    auto run = UploadRun::create(*m_session, m_context);
    if (!run)
        co_return std::unexpected(fail(run.error()));
    const std::string notConnected = APIError(APIError::NotPaired{}).description();
    if (!co_await m_session->connect(stop))
        co_return std::unexpected(fail(notConnected, ExitCode::notConnected));
    auto chosen = co_await m_session->chooseProject(std::move(project), stop);
    if (!chosen)
        co_return std::unexpected(fail(chosen.error().description(), chosen.error().as<APIError::NotPaired>()
                                                                         ? ExitCode::notConnected
                                                                         : ExitCode::failed));
    m_run = std::move(*run);
    co_await m_run->fetchLimits(stop);
    co_return std::move(*chosen);
}

Task<ExitCode> UploadCommand::upload(UploadArguments arguments, std::stop_token stop) {
    const auto project = co_await begin(arguments.projectId, stop);
    if (!project)
        co_return project.error();
    m_run->onEnd = [this](const UploadEnd &end) {
        if (m_asked.contains(end.entryId))
            report(end);
    };
    m_run->resume(false, std::nullopt);
    for (const std::filesystem::path &file : arguments.files) {
        auto capture = co_await runBlocking([file] { return readCaptureFile(file); }, stop);
        if (!capture)
            co_return ExitCode::failed;
        if (!*capture) {
            fail(capture->error());
            continue;
        }
        const QUuid id = m_run->add(std::move(**capture), *project);
        m_asked.insert(id);
        // It may have been on its way already, and have arrived before the file was looked at.
        if (const UploadEnd *const end = m_run->endOf(id))
            report(*end);
    }
    co_return co_await finish(stop);
}

Task<ExitCode> UploadCommand::resume(std::stop_token stop) {
    const auto project = co_await begin(std::nullopt, stop);
    if (!project)
        co_return project.error();
    m_run->onEnd = [this](const UploadEnd &end) { report(end); };
    if (m_run->resume(true, *project) == 0)
        m_context.reporter.note("Nothing is waiting to be uploaded");
    co_return co_await finish(stop);
}

Task<ExitCode> UploadCommand::finish(std::stop_token stop) {
    if (m_interrupted)
        m_run->interrupt();
    if (!co_await m_run->finish(stop))
        co_return fail(uploadInterrupted);
    co_return m_worst;
}

void UploadCommand::report(const UploadEnd &end) {
    const std::string path = end.file.string();
    if (end.assetId) {
        m_context.reporter.result({{"file", path}, {"assetId", *end.assetId}, {"projectId", end.projectId}},
                                  path + " is uploaded as " + *end.assetId);
        return;
    }
    m_worst = ExitCode::failed;
    m_context.reporter.failure(end.assetId.error(), end.file);
}

} // namespace

Task<ExitCode> runUpload(UploadArguments arguments, CommandContext context, std::stop_token stop) {
    UploadCommand command(std::move(context));
    co_return co_await command.upload(std::move(arguments), stop);
}

Task<ExitCode> runResume(CommandContext context, std::stop_token stop) {
    UploadCommand command(std::move(context));
    co_return co_await command.resume(stop);
}

} // namespace vantrell
