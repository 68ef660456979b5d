// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/RecordCommand.h"

#include "Capture/CaptureStorage.h"
#include "CommandLine/CaptureDelivery.h"
#include "CommandLine/UnixSignals.h"
#include "Recording/DiskSpace.h"
#include "Recording/RecordingEngine.h"
#include "Support/Log.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>

namespace vantrell {

namespace {

/// One run of `record`: the engine and what ends it.
class RecordRun {
public:
    RecordRun(RecordArguments arguments, CommandContext context)
        : m_arguments(std::move(arguments)), m_context(std::move(context)),
          m_signals({SIGINT, SIGTERM, SIGUSR1}, [this](int signal) { onSignal(signal); }),
          m_delivery({m_arguments.outputFolder, m_arguments.upload, m_arguments.projectId}, m_context) {}

    Task<ExitCode> run(std::stop_token stop);

private:
    Task<std::expected<CaptureBackend::Chosen, Failure>> prepare(std::stop_token stop);
    Task<std::expected<void, PlatformError>> checkMicrophone(std::stop_token stop);
    void onSignal(int signal);
    Task<> togglePause(std::stop_token stop);
    Task<> stopAfter(double seconds, std::stop_token stop);
    ExitCode fail(const std::string &sentence, ExitCode code = ExitCode::failed) const {
        m_context.reporter.failure(sentence);
        return code;
    }

    const RecordArguments m_arguments;
    const CommandContext m_context;
    UnixSignals m_signals;
    Platform m_platform = m_context.loadPlatform(m_context.clock);
    CaptureDelivery m_delivery;
    std::unique_ptr<RecordingEngine> m_engine;
    /// Resolved with the failure that ended the recording, or with nothing when it was asked to end.
    OneShot<std::optional<Failure>> m_ended;
    /// Pauses and resumes run one after another.
    bool m_isTogglingPause = false;
    OneShot<bool> m_toggled;
    TaskScope m_scope;
};

Task<std::expected<CaptureBackend::Chosen, Failure>> RecordRun::prepare(std::stop_token stop) {
    auto chosen = co_await m_platform.capture->choose(m_arguments.target, stop);
    if (!chosen)
        co_return std::unexpected(
            std::visit([](auto &&error) { return Failure(std::move(error)); }, std::move(chosen.error())));
    if (const auto enough = checkFreeDiskSpace(CaptureStorage::directory()); !enough)
        co_return std::unexpected(Failure(enough.error()));
    co_return std::move(*chosen);
}

Task<std::expected<void, PlatformError>> RecordRun::checkMicrophone(std::stop_token stop) {
    if (!m_arguments.microphone)
        co_return std::expected<void, PlatformError>();
    const auto connected = co_await m_platform.audio->microphones(stop);
    // Without a sound server the screen is recorded all the same, and the result says what is missing.
    if (!connected)
        co_return std::expected<void, PlatformError>();
    co_return requireMicrophone(*connected, m_arguments.microphoneId);
}

Task<ExitCode> RecordRun::run(std::stop_token stop) {
    const auto chosen = co_await prepare(stop);
    if (!chosen)
        co_return fail(description(chosen.error()));
    if (const auto microphone = co_await checkMicrophone(stop); !microphone)
        co_return fail(microphone.error().description());
    if (const auto prepared = co_await m_delivery.prepare(stop); !prepared)
        co_return prepared.error();

    RecordingOptions options;
    options.target = CaptureTarget::of(*chosen->source);
    options.micEnabled = m_arguments.microphone;
    options.micDeviceId = m_arguments.microphoneId;
    options.systemAudioEnabled = m_arguments.systemAudio;
    options.separateCursor = !m_arguments.drawsCursor;
    const RecordingPorts ports{*m_platform.streams, chosen->source, *m_platform.input, m_context.clock};
    m_engine = std::make_unique<RecordingEngine>(ports, std::move(options));
    m_engine->onStreamDeath = [this](Failure failure) {
        qCWarning(logCapture, "stream died mid-recording: %s", description(failure).c_str());
        m_ended.resolve(std::move(failure));
    };
    if (const auto started = co_await m_engine->start(stop); !started)
        co_return fail(description(started.error()));

    m_context.reporter.note("Recording: Ctrl-C stops");
    if (m_arguments.seconds)
        m_scope.start(this, &RecordRun::stopAfter, *m_arguments.seconds);
    const auto ended = co_await m_ended.wait(stop);
    if (m_isTogglingPause)
        co_await m_toggled.wait(stop);

    auto outcome = co_await m_engine->stop(stop);
    if (!outcome)
        co_return fail(description(ended && *ended ? **ended : outcome.error()), ExitCode::nothingRecorded);
    nlohmann::json more{{"droppedFrames", outcome->droppedFrames}};
    if (outcome->soundProblem) {
        more["soundProblem"] = outcome->soundProblem->description();
        m_context.reporter.note("Recorded without sound: " + outcome->soundProblem->description());
    }
    if (ended && *ended) {
        // What was recorded up to here is delivered all the same.
        more["endedBecause"] = description(**ended);
        m_context.reporter.note(description(**ended));
    }
    m_delivery.onSaved = [journal = outcome->journal] { RecordingJournal::remove(journal); };
    co_return co_await m_delivery.deliver(std::move(outcome->capture), outcome->isPartial, std::move(more),
                                          outcome->journal, stop);
}

void RecordRun::onSignal(int signal) {
    if (signal == SIGUSR1)
        m_scope.start(this, &RecordRun::togglePause);
    else if (!m_ended.resolve(std::nullopt))
        m_delivery.interrupt();
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

Task<> RecordRun::stopAfter(double seconds, std::stop_token stop) {
    // Counted from the first picture, which may come only while this sleeps.
    for (;;) {
        const auto anchor = m_engine->anchorHostTime();
        const std::chrono::duration<double> left(anchor ? *anchor + seconds - m_context.clock.hostNow() : 0);
        if (left.count() <= 0)
            break;
        if (!co_await m_context.clock.sleep(std::chrono::ceil<std::chrono::milliseconds>(left), stop))
            co_return;
    }
    m_ended.resolve(std::nullopt);
}

} // namespace

Task<ExitCode> runRecord(RecordArguments arguments, CommandContext context, std::stop_token stop) {
    RecordRun run(std::move(arguments), std::move(context));
    co_return co_await run.run(stop);
}

} // namespace vantrell
