// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/RecordCommand.h"

#include "Capture/CaptureStorage.h"
#include "CommandLine/ReportedDelivery.h"
#include "CommandLine/UnixSignals.h"
#include "Platform/CameraError.h"
#include "Recording/CameraEngine.h"
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
    Task<> startEngine(std::stop_token stop);
    Task<> openCamera(std::stop_token stop);
    Task<std::expected<void, Failure>> pauseOrResume(std::stop_token stop);
    Task<ExitCode> save(std::optional<Failure> endedBecause, std::stop_token stop);
    Task<ExitCode> saveCameraAlone(std::string sentence, std::stop_token stop);
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
    ReportedDelivery m_delivery;
    std::unique_ptr<RecordingEngine> m_engine;
    /// While it is being found out what to record.
    std::optional<std::stop_source> m_choosing;
    /// Null without a camera; then `m_cameraProblem` says why there is none, if one was wanted.
    std::shared_ptr<CameraEngine> m_camera;
    std::optional<PlatformError> m_cameraProblem;
    OneShot<std::expected<void, Failure>> m_started;
    /// Resolved with the failure that ended the recording, or with nothing when it was asked to end.
    OneShot<std::optional<Failure>> m_ended;
    /// Pauses and resumes run one after another.
    bool m_isTogglingPause = false;
    OneShot<bool> m_toggled;
    /// The start alone, which a signal cancels.
    TaskScope m_startScope;
    TaskScope m_scope;
};

Task<std::expected<CaptureBackend::Chosen, Failure>> RecordRun::prepare(std::stop_token stop) {
    CaptureRequest target = m_arguments.target;
    target.separatesPointer = !m_arguments.drawsCursor;
    // The desktop may ask first: Ctrl-C takes the question back.
    m_choosing.emplace();
    const std::stop_callback outer(stop, [this] { std::stop_source(*m_choosing).request_stop(); });
    auto chosen = co_await m_platform.capture->choose(std::move(target), m_choosing->get_token());
    if (m_choosing->stop_requested() && !stop.stop_requested()) {
        // Another Ctrl-C does not wait for the desktop either.
        m_choosing.emplace();
        co_await m_platform.capture->settled(m_choosing->get_token());
    }
    m_choosing.reset();
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
    const auto cancelled = [this] {
        return fail("Cancelled before anything was recorded", ExitCode::nothingRecorded);
    };
    auto chosen = co_await prepare(stop);
    if (!chosen && std::holds_alternative<Cancelled>(chosen.error()))
        co_return cancelled();
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
    if (m_arguments.camera)
        options.recordingId = newRecordingId();
    RecordingPorts ports{*m_platform.streams, std::move(chosen->source), *m_platform.input, m_context.clock};
    m_engine = std::make_unique<RecordingEngine>(std::move(ports), std::move(options));
    m_engine->onStreamDeath = [this](Failure failure) {
        qCCritical(logCapture, "stream died mid-recording: %s", description(failure).c_str());
        m_ended.resolve(std::move(failure));
    };
    if (m_ended.settled())
        co_return cancelled();
    m_startScope.start(this, &RecordRun::startEngine);
    const auto started = co_await m_started.wait(stop);
    if (!started || (!*started && std::holds_alternative<Cancelled>(started->error())))
        co_return cancelled();
    if (!*started) {
        qCCritical(logCapture, "record start failed: %s", description(started->error()).c_str());
        co_return fail(description(started->error()));
    }

    m_context.reporter.note("Recording: Ctrl-C stops");
    if (m_arguments.seconds)
        m_scope.start(this, &RecordRun::stopAfter, *m_arguments.seconds);
    const auto ended = co_await m_ended.wait(stop);
    if (m_isTogglingPause)
        co_await m_toggled.wait(stop);
    co_return co_await save(ended ? *ended : std::nullopt, stop);
}

Task<> RecordRun::startEngine(std::stop_token stop) {
    // Before the screen, so that both begin together.
    if (m_arguments.camera)
        co_await openCamera(stop);
    auto started = co_await m_engine->start(stop);
    if (started && m_camera)
        m_camera->start(m_engine->journal());
    m_started.resolve(std::move(started));
}

/// Without a camera the screen is recorded all the same, and the result says what is missing.
Task<> RecordRun::openCamera(std::stop_token stop) {
    if (!co_await m_platform.cameras->requestAccess(stop)) {
        qCInfo(logCapture, "camera skipped: granted=false");
        m_cameraProblem = cameraError(CameraErrorCode::accessRefused);
        co_return;
    }
    const CameraPorts ports{*m_platform.cameras, *m_platform.cameraSessions, m_context.clock};
    const auto camera = std::make_shared<CameraEngine>(ports, m_arguments.cameraId);
    const auto opened = co_await camera->open(stop);
    if (opened)
        m_camera = camera;
    else if (const auto *error = std::get_if<PlatformError>(&opened.error()))
        m_cameraProblem = *error;
}

Task<ExitCode> RecordRun::save(std::optional<Failure> endedBecause, std::stop_token stop) {
    if (m_camera)
        m_camera->release();
    auto outcome = co_await m_engine->stop(stop);
    if (!outcome) {
        qCCritical(logCapture, "record stop failed: %s", description(outcome.error()).c_str());
        std::string sentence = endedBecause ? description(*endedBecause) : description(outcome.error());
        if (!outcome.error().isRecoverable)
            co_return co_await saveCameraAlone(std::move(sentence), stop);
        co_return fail(sentence + ". What was recorded is kept: vantrell-capture recover saves it");
    }
    CaptureDelivery::Captures captures;
    captures.main = std::move(outcome->capture);
    captures.recoverable = outcome->journal;
    nlohmann::json more{{"droppedFrames", outcome->droppedFrames}};
    if (m_camera) {
        m_cameraProblem = m_camera->problem();
        captures.camera = co_await m_camera->stop(std::move(outcome->segments), stop);
        if (!captures.camera) {
            more["camera"] = {{"error", "Camera recording failed to save"}};
            m_context.reporter.note("Camera recording failed to save");
        }
    }
    if (m_cameraProblem) {
        more["cameraProblem"] = m_cameraProblem->description();
        m_context.reporter.note(
            (m_camera ? "The camera's recording ended early: " : "Recorded without camera: ") +
            m_cameraProblem->description());
    }
    if (outcome->soundProblem) {
        more["soundProblem"] = outcome->soundProblem->description();
        m_context.reporter.note("Recorded without sound: " + outcome->soundProblem->description());
    }
    if (endedBecause) {
        // What was recorded up to here is delivered all the same.
        more["endedBecause"] = description(*endedBecause);
        m_context.reporter.note(description(*endedBecause));
    }
    if (outcome->isPartial)
        qCCritical(logCapture, "recording salvaged partially, final segment lost");
    if (outcome->isRestRecoverable) {
        more["restRecoverable"] = true;
        m_context.reporter.note("The last part is missing but kept: vantrell-capture recover saves it");
    }
    co_return co_await m_delivery.deliver(std::move(captures), outcome->isPartial, std::move(more), stop);
}

/// Nothing of the screen was recorded; what the camera saw is a capture all the same.
Task<ExitCode> RecordRun::saveCameraAlone(std::string sentence, std::stop_token stop) {
    std::optional<CaptureResult> recorded;
    if (m_camera)
        recorded = co_await m_camera->stop({}, stop);
    if (!recorded)
        co_return fail(sentence, ExitCode::nothingRecorded);
    CaptureDelivery::Captures captures;
    captures.main = std::move(*recorded);
    captures.mainLayer = RecordingLayer::camera;
    nlohmann::json more{{"endedBecause", sentence}};
    m_context.reporter.note(sentence);
    co_await m_delivery.deliver(std::move(captures), true, std::move(more), stop);
    co_return ExitCode::failed;
}

void RecordRun::onSignal(int signal) {
    if (signal == SIGUSR1) {
        m_scope.start(this, &RecordRun::togglePause);
        return;
    }
    const bool isFirst = m_ended.resolve(std::nullopt);
    if (m_choosing)
        // A copy: what waited for it goes on within. The first ends the question, another the wait for its
        // end.
        std::stop_source(*m_choosing).request_stop();
    else if (!isFirst)
        m_delivery.interrupt();
    else if (m_engine && !m_engine->startedAt())
        m_startScope.cancel();
}

Task<> RecordRun::togglePause(std::stop_token stop) {
    if (!m_engine || !m_engine->startedAt() || m_isTogglingPause || m_ended.settled())
        co_return;
    m_isTogglingPause = true;
    m_toggled = OneShot<bool>();
    const bool resumes = m_engine->isPaused();
    const auto toggled = co_await pauseOrResume(stop);
    m_isTogglingPause = false;
    m_toggled.resolve(true);
    if (toggled)
        m_context.reporter.note(resumes ? "Recording" : "Paused");
    else {
        qCCritical(logCapture, "%s failed: %s", resumes ? "resume" : "pause",
                   description(toggled.error()).c_str());
        m_ended.resolve(toggled.error());
    }
}

Task<std::expected<void, Failure>> RecordRun::pauseOrResume(std::stop_token stop) {
    if (m_engine->isPaused()) {
        auto resumed = co_await m_engine->resume(stop);
        if (resumed && m_camera)
            m_camera->start(m_engine->journal());
        co_return resumed;
    }
    if (m_camera)
        m_camera->endFile();
    auto paused = co_await m_engine->pause(stop);
    if (m_camera)
        co_await m_camera->finishFile(stop);
    co_return paused;
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
