// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/UploadCommand.h"

#include "CommandLine/ApplicationUploads.h"
#include "CommandLine/Interrupted.h"
#include "CommandLine/OpenSession.h"
#include "CommandLine/UnixSignals.h"
#include "CommandLine/UploadProgress.h"
#include "Session/CaptureFile.h"
#include "Session/CapturePruning.h"
#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"
#include "Support/FilePath.h"

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
    /// The account's connection and the journal, or how the command ends.
    Task<std::expected<void, ExitCode>> begin();
    Task<ExitCode> finish(std::set<QUuid> entries, std::stop_token stop);
    void onSignal() {
        if (m_run)
            m_run->interrupt();
        // Not in here: the waits resume inside the request, and the command may end with them.
        EventLoop::current().post([starting = m_starting]() mutable { starting.request_stop(); });
    }
    Task<ExitCode> uploadThroughApplication(UploadArguments arguments, std::stop_token stop);
    Task<ExitCode> resumeInApplication(std::stop_token stop);
    Task<ExitCode> awaitInApplication(ApplicationUploads *uploads, std::vector<std::string> ids,
                                      std::stop_token stop);
    void report(const UploadEnd &end);
    void report(const std::filesystem::path &file, const std::string &projectId,
                const std::expected<std::string, std::string> &assetId);
    ExitCode fail(const std::string &sentence, ExitCode code = ExitCode::failed) {
        m_context.reporter.failure(sentence);
        return m_worst = code;
    }
    ExitCode failOn(const APIError &error, const char *interrupted);
    ExitCode failOn(const RunningApplication::CallError &error, const char *interrupted);

    const CommandContext m_context;
    /// Ends the waits before the uploads; the uploads themselves are interrupted through the run.
    std::stop_source m_starting;
    UnixSignals m_signals;
    ExitCode m_worst = ExitCode::success;
    /// What `upload` was given; what else arrives meanwhile is not reported.
    std::set<QUuid> m_asked;
    std::unique_ptr<ServiceSession> m_session;
    std::unique_ptr<UploadRun> m_run;
    std::optional<UploadProgress> m_progress;
};

Task<std::expected<void, ExitCode>> UploadCommand::begin() {
    auto session = openSession(m_context);
    if (!session)
        co_return std::unexpected(fail(session.error()));
    m_session = std::move(*session);
    auto run = UploadRun::create(*m_session, m_context.clock);
    if (!run)
        co_return std::unexpected(fail(run.error()));
    m_run = std::move(*run);
    m_progress.emplace(*m_run);
    if (!co_await m_session->connect(m_starting.get_token()) && !m_starting.stop_requested())
        co_return std::unexpected(
            fail(APIError(APIError::NotPaired{}).description(), ExitCode::notConnected));
    co_return std::expected<void, ExitCode>();
}

ExitCode UploadCommand::failOn(const APIError &error, const char *interrupted) {
    if (m_starting.stop_requested())
        return fail(interrupted);
    return fail(error.description(),
                error.as<APIError::NotPaired>() ? ExitCode::notConnected : ExitCode::failed);
}

Task<ExitCode> UploadCommand::uploadThroughApplication(UploadArguments arguments, std::stop_token stop) {
    ApplicationUploads uploads(m_context.clock);
    const auto taken = co_await uploads.add(arguments.files, arguments.projectId, m_starting.get_token());
    if (!taken)
        co_return failOn(taken.error(), uploadNotBegun);
    std::vector<std::string> ids;
    for (const ApplicationUploads::Taken &each : *taken) {
        if (each.id)
            ids.push_back(*each.id);
        else
            fail(each.id.error());
    }
    co_return co_await awaitInApplication(&uploads, std::move(ids), stop);
}

Task<ExitCode> UploadCommand::resumeInApplication(std::stop_token stop) {
    ApplicationUploads uploads(m_context.clock);
    auto ids = co_await uploads.resume(m_starting.get_token());
    if (!ids)
        co_return failOn(ids.error(), uploadInterrupted);
    if (ids->empty())
        m_context.reporter.note("Nothing is waiting to be uploaded");
    co_return co_await awaitInApplication(&uploads, std::move(*ids), stop);
}

Task<ExitCode> UploadCommand::awaitInApplication(ApplicationUploads *uploads, std::vector<std::string> ids,
                                                 std::stop_token) {
    const auto awaited = co_await uploads->await(
        std::move(ids),
        [this](const RunningApplication::Uploaded &uploaded) {
            report(pathFromText(uploaded.file), uploaded.projectId, uploaded.assetId);
        },
        m_starting.get_token());
    if (!awaited)
        co_return failOn(awaited.error(), uploadInterrupted);
    co_return m_worst;
}

ExitCode UploadCommand::failOn(const RunningApplication::CallError &error, const char *interrupted) {
    if (m_starting.stop_requested() || error.isGone)
        return fail(interrupted);
    return fail(error.sentence, error.isNotConnected ? ExitCode::notConnected : ExitCode::failed);
}

Task<ExitCode> UploadCommand::upload(UploadArguments arguments, std::stop_token stop) {
    if (RunningApplication::isThere())
        co_return co_await uploadThroughApplication(std::move(arguments), stop);
    if (const auto begun = co_await begin(); !begun)
        co_return begun.error();
    const std::stop_token starting = m_starting.get_token();
    const auto project = co_await m_session->projectForUpload(arguments.projectId, starting);
    if (!project)
        co_return failOn(project.error(), uploadNotBegun);
    co_await m_run->fetchLimits(starting);
    if (m_starting.stop_requested())
        co_return fail(uploadNotBegun);
    m_run->onEnd = [this](const UploadEnd &end) {
        if (m_asked.contains(end.ids.entryId))
            report(end);
    };
    m_run->resume(false, std::nullopt);
    for (const std::filesystem::path &file : arguments.files) {
        auto capture = co_await runBlocking([file] { return readCaptureFile(file); }, stop);
        if (!capture) {
            const auto *const sentence = std::get_if<std::string>(&capture.error());
            if (!sentence)
                co_return ExitCode::failed;
            fail(*sentence);
            continue;
        }
        const QUuid id = m_run->add(std::move(*capture), *project);
        const bool isNew = m_asked.insert(id).second;
        // It may have been on its way already, and have arrived before the file was looked at.
        if (const UploadEnd *const end = m_run->endOf(id); end && isNew)
            report(*end);
    }
    co_await runBlocking([files = arguments.files] { pruneCaptures(files); }, stop);
    co_return co_await finish(m_asked, stop);
}

Task<ExitCode> UploadCommand::resume(std::stop_token stop) {
    if (RunningApplication::isThere())
        co_return co_await resumeInApplication(stop);
    if (const auto begun = co_await begin(); !begun)
        co_return begun.error();
    const std::stop_token starting = m_starting.get_token();
    const auto project = co_await m_session->projectThatExists(starting);
    if (!project)
        co_return failOn(project.error(), uploadInterrupted);
    co_await m_run->fetchLimits(starting);
    if (m_starting.stop_requested())
        co_return fail(uploadInterrupted);
    m_run->onEnd = [this](const UploadEnd &end) { report(end); };
    std::set<QUuid> resumed = m_run->resume(true, *project);
    if (resumed.empty())
        m_context.reporter.note("Nothing is waiting to be uploaded");
    co_await runBlocking([] { pruneCaptures({}); }, stop);
    co_return co_await finish(std::move(resumed), stop);
}

Task<ExitCode> UploadCommand::finish(std::set<QUuid> entries, std::stop_token stop) {
    const bool haveEnded = co_await m_run->finish(std::move(entries), stop);
    m_progress->clear();
    if (!haveEnded)
        co_return fail(uploadInterrupted);
    co_return m_worst;
}

void UploadCommand::report(const UploadEnd &end) {
    m_progress->clear();
    report(end.file, end.projectId, end.assetId);
}

void UploadCommand::report(const std::filesystem::path &file, const std::string &projectId,
                           const std::expected<std::string, std::string> &assetId) {
    if (assetId) {
        m_context.reporter.result(
            {{"file", textOfPath(file)}, {"assetId", *assetId}, {"projectId", projectId}},
            file.string() + " is uploaded as " + *assetId);
        return;
    }
    m_worst = ExitCode::failed;
    m_context.reporter.failure(assetId.error(), file);
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
