// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/RecordCommand.h"

#include "App/CaptureUpload.h"
#include "App/PlatformLoader.h"
#include "App/SavedCapture.h"
#include "App/TargetResolver.h"
#include "App/UnixSignals.h"
#include "Capture/CaptureStorage.h"
#include "Recording/DiskSpace.h"
#include "Recording/RecordingEngine.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <csignal>

namespace vantrell {

namespace {

/// One run of `record`: the engine and what ends it.
class RecordRun {
public:
    RecordRun(RecordArguments arguments, CommandContext context)
        : m_arguments(std::move(arguments)), m_context(std::move(context)),
          m_signals({SIGINT, SIGTERM, SIGUSR1}, [this](int signal) { onSignal(signal); }) {}

    Task<ExitCode> run(std::stop_token stop);

private:
    std::expected<RecordingTarget, std::string> prepare();
    void onSignal(int signal);
    Task<> togglePause(std::stop_token stop);
    Task<> stopLater(std::chrono::milliseconds delay, std::stop_token stop);
    Task<ExitCode> deliver(RecordingStopOutcome outcome, std::stop_token stop);
    Task<std::expected<std::string, std::string>> upload(CaptureResult capture, SavedCapture saved,
                                                         std::stop_token stop);
    ExitCode fail(const std::string &sentence, ExitCode code = ExitCode::failed) const {
        m_context.reporter.failure(sentence);
        return code;
    }

    const RecordArguments m_arguments;
    const CommandContext m_context;
    UnixSignals m_signals;
    Platform m_platform = loadPlatform(m_context.clock);
    /// Present when the capture is to be uploaded.
    std::unique_ptr<ServiceSession> m_session;
    std::unique_ptr<RecordingEngine> m_engine;
    /// Resolved with the failure that ended the recording, or with nothing when it was asked to end.
    OneShot<std::optional<Failure>> m_ended;
    /// Pauses and resumes run one after another.
    bool m_isTogglingPause = false;
    OneShot<bool> m_toggled;
    TaskScope m_scope;
};

std::expected<RecordingTarget, std::string> RecordRun::prepare() {
    auto target = resolveTarget(m_arguments.target, *m_platform.capture);
    if (!target)
        return std::unexpected(target.error().description());
    std::vector<std::filesystem::path> folders{CaptureStorage::directory()};
    if (m_arguments.outputFolder)
        folders.push_back(*m_arguments.outputFolder);
    for (const std::filesystem::path &folder : folders) {
        if (const auto writable = prepareFolder(folder); !writable)
            return std::unexpected(writable.error().description());
    }
    if (const auto enough = checkFreeDiskSpace(folders.front()); !enough)
        return std::unexpected(description(enough.error()));
    return std::move(*target);
}

Task<ExitCode> RecordRun::run(std::stop_token stop) {
    auto target = prepare();
    if (!target)
        co_return fail(target.error());
    if (m_arguments.upload) {
        // Asked before anything is recorded, so that a wrong address or a missing connection costs no work.
        auto session = ServiceSession::create(m_context);
        if (!session)
            co_return fail(session.error());
        m_session = std::move(*session);
        if (!co_await m_session->connect(stop))
            co_return fail(APIError(APIError::NotPaired{}).description(), ExitCode::notConnected);
    }

    RecordingOptions options;
    options.target = std::move(*target);
    options.micEnabled = m_arguments.microphone;
    options.micDeviceId = m_arguments.microphoneId;
    options.systemAudioEnabled = m_arguments.systemAudio;
    options.separateCursor = !m_arguments.drawsCursor;
    const RecordingPorts ports{*m_platform.capture, *m_platform.input, m_platform.windowBounds,
                               m_context.clock};
    m_engine = std::make_unique<RecordingEngine>(ports, std::move(options));
    m_engine->onStreamDeath = [this](Failure failure) {
        qCWarning(logCapture, "stream died mid-recording: %s", description(failure).c_str());
        m_ended.resolve(std::move(failure));
    };
    if (const auto started = co_await m_engine->start(stop); !started)
        co_return fail(description(started.error()));

    m_context.reporter.note("Recording: Ctrl-C stops");
    if (m_arguments.seconds)
        m_scope.start(this, &RecordRun::stopLater,
                      std::chrono::milliseconds(std::llround(*m_arguments.seconds * 1000)));
    const auto ended = co_await m_ended.wait(stop);
    if (m_isTogglingPause)
        co_await m_toggled.wait(stop);

    auto outcome = co_await m_engine->stop(stop);
    if (!outcome)
        co_return fail(description(ended && *ended ? **ended : outcome.error()), ExitCode::nothingRecorded);
    const ExitCode delivered = co_await deliver(std::move(*outcome), stop);
    if (ended && *ended) {
        // The capture above is what was recorded up to here.
        m_context.reporter.note(description(**ended));
    }
    co_return delivered;
}

void RecordRun::onSignal(int signal) {
    if (signal == SIGUSR1)
        m_scope.start(this, &RecordRun::togglePause);
    else
        m_ended.resolve(std::nullopt);
}

Task<> RecordRun::togglePause(std::stop_token stop) {
    if (!m_engine || !m_engine->startedAt() || m_isTogglingPause || m_ended.settled())
        co_return;
    m_isTogglingPause = true;
    m_toggled = OneShot<bool>();
    const bool resumes = m_engine->isPaused();
    const auto toggled = resumes ? co_await m_engine->resume(stop) : co_await m_engine->pause(stop);
    m_isTogglingPause = false;
    m_toggled.resolve(true);
    if (toggled)
        m_context.reporter.note(resumes ? "Recording" : "Paused");
    else
        m_ended.resolve(toggled.error());
}

Task<> RecordRun::stopLater(std::chrono::milliseconds delay, std::stop_token stop) {
    if (co_await m_context.clock.sleep(delay, stop))
        m_ended.resolve(std::nullopt);
}

Task<ExitCode> RecordRun::deliver(RecordingStopOutcome outcome, std::stop_token stop) {
    const CaptureResult &capture = outcome.capture;
    const auto saved = co_await runBlocking(
        [capture, folder = m_arguments.outputFolder] { return saveCapture(capture, folder); }, stop);
    if (!saved)
        co_return ExitCode::failed;
    if (!*saved)
        co_return fail(saved->error().description());
    RecordingJournal::remove(outcome.journal);
    nlohmann::json json = (*saved)->json(capture, outcome.isPartial);
    json["droppedFrames"] = outcome.droppedFrames;
    std::string text = (*saved)->file.string();
    ExitCode code = ExitCode::success;
    if (m_session) {
        const auto asset = co_await upload(capture, **saved, stop);
        if (asset) {
            json["assetId"] = *asset;
            text += " is uploaded as " + *asset;
        } else {
            // The recording itself is safe: it is told all the same, with what went wrong behind it.
            json["error"] = asset.error();
            text += " is kept: " + asset.error();
            code = ExitCode::failed;
        }
    }
    m_context.reporter.result(json, text);
    co_return code;
}

Task<std::expected<std::string, std::string>> RecordRun::upload(CaptureResult capture, SavedCapture saved,
                                                                std::stop_token stop) {
    const auto project = co_await m_session->chooseProject(m_arguments.projectId, stop);
    if (!project)
        co_return std::unexpected(project.error().description());
    CaptureUpload job{saved.file,         capture.kind,    capture.mime, capture.name,
                      capture.durationMs, saved.thumbnail, saved.sidecar};
    co_return co_await uploadCapture(std::move(job), *project, m_session.get(), m_context, stop);
}

} // namespace

Task<ExitCode> runRecord(RecordArguments arguments, CommandContext context, std::stop_token stop) {
    RecordRun run(std::move(arguments), std::move(context));
    co_return co_await run.run(stop);
}

} // namespace vantrell
