// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/RecordingFlow.h"

#include "Analytics/Analytics.h"
#include "Capture/CaptureStorage.h"
#include "Capture/ScreenshotEngine.h"
#include "Platform/Desktop/Trash.h"
#include "Platform/DisplayLayout.h"
#include "Recording/DiskSpace.h"
#include "Recording/RecordingRecovery.h"
#include "Session/SavedCapture.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <cmath>

#include <malloc.h>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr const char *recordingCard = "Screen recording";
constexpr const char *cameraCard = "Camera recording";
constexpr const char *cameraNotSaved = "Camera recording failed to save";
constexpr const char *screenshotCard = "Screenshot";
/// The plan's limits are asked for at the start of a recording for this long; later ones still count.
constexpr auto limitsPatience = 3s;
/// What takes longer to be chosen was asked of the user.
constexpr double dialogSeconds = 1;
constexpr auto dialogFades = 400ms;

/// What the usage events call the tool that led to it.
ToolMode toolOf(const SelectionOutcome &outcome) {
    if (std::holds_alternative<SelectionOutcome::Region>(outcome.picked))
        return ToolMode::area;
    if (const auto *picker = std::get_if<SelectionOutcome::DesktopPicker>(&outcome.picked))
        return picker->what.kind == CaptureRequest::LetDesktopAsk::Kind::window ? ToolMode::window
                                                                                : ToolMode::screen;
    return std::holds_alternative<SelectionOutcome::Window>(outcome.picked) ? ToolMode::window
                                                                            : ToolMode::screen;
}

std::string toolName(const SelectionOutcome &outcome) {
    return std::string(spelling(toolOf(outcome)));
}

/// Where our panels would be in the picture.
UserInterface::Recorded recordedOf(const CaptureSource &source, const Display &display) {
    if (source.facts().kind == CaptureKind::display)
        return {display, display.pixels};
    if (source.facts().kind == CaptureKind::area)
        return {display, source.facts().place};
    return {display, std::nullopt};
}

Task<> giveUpAfter(Clock *clock, std::chrono::milliseconds patience, std::stop_source given,
                   std::stop_token stop) {
    if (co_await clock->sleep(patience, stop))
        given.request_stop();
}

} // namespace

RecordingFlow::RecordingFlow(Services services)
    : m_services(services), m_camera({services.platform, services.ui, services.settings, services.clock}) {}

void RecordingFlow::changed() {
    // Sleep waits until the recording is on disk; a screen that goes dark would be recorded as such, but a
    // paused recording keeps nobody awake.
    m_services.session.holdSleepBack(isRecording() || isFinalizingRecording());
    m_services.session.keepAwake(isRecording() && !isPaused());
    if (onChange)
        onChange();
}

std::optional<RecordingFlow::Picked> RecordingFlow::requestOf(const SelectionOutcome &outcome) {
    if (const auto *region = std::get_if<SelectionOutcome::Region>(&outcome.picked))
        return Picked{{CaptureRequest::Area{inPixelsOf(region->display, region->rect)}},
                      region->display,
                      region->record};
    if (const auto *whole = std::get_if<SelectionOutcome::WholeDisplay>(&outcome.picked))
        return Picked{{CaptureRequest::WholeDisplay{whole->display.id}}, whole->display, whole->record};
    if (const auto *window = std::get_if<SelectionOutcome::Window>(&outcome.picked))
        return Picked{{CaptureRequest::Window{window->window.id}}, window->display, window->record};
    if (const auto *picker = std::get_if<SelectionOutcome::DesktopPicker>(&outcome.picked))
        return Picked{{picker->what}, picker->display, picker->record};
    return std::nullopt;
}

void RecordingFlow::startRecording(SelectionOutcome outcome, bool skipCountdown) {
    if (isRecording() || m_isStartingRecording || outcome.isCancelled())
        return;
    const std::filesystem::path folder = CaptureStorage::directory();
    if (const auto writable = prepareFolder(folder); !writable)
        return failStart(writable.error().description());
    if (const auto enough = checkFreeDiskSpace(folder); !enough)
        return showFailedStart(description(enough.error()));
    m_activeRecordingOutcome = outcome;
    m_isStartingRecording = true;
    changed();
    m_startScope.start(this, &RecordingFlow::start, std::move(outcome), skipCountdown);
}

void RecordingFlow::failStart(const std::string &why) {
    qCCritical(logCapture, "record start failed: %s", why.c_str());
    showFailedStart(why);
}

void RecordingFlow::showFailedStart(const std::string &why) {
    const QUuid card = m_services.shelf.addProcessing(recordingCard);
    m_services.shelf.update(card, ShelfItem::Failed{why});
}

Task<> RecordingFlow::start(SelectionOutcome outcome, bool skipCountdown, std::stop_token stop) {
    const auto begun = co_await begin(std::move(outcome), skipCountdown, stop);
    m_isStartingRecording = false;
    if (!begun) {
        m_engine.reset();
        m_hudState.reset();
        m_services.ui.hideHUD();
        if (!std::holds_alternative<Cancelled>(begun.error())) {
            failStart(description(begun.error()));
        } else if (!stop.stop_requested() && onStartCancelled) {
            onStartCancelled();
        }
    }
    changed();
}

Task<std::expected<void, Failure>> RecordingFlow::begin(SelectionOutcome outcome, bool skipCountdown,
                                                        std::stop_token stop) {
    auto picked = requestOf(outcome);
    picked->request.separatesPointer = m_services.settings.separateCursor();
    ServiceAccount &account = m_services.account;
    if (!account.limitsFetched() && account.isPaired()) {
        std::stop_source given;
        const std::stop_callback outer(stop, [given]() mutable { given.request_stop(); });
        TaskScope timer;
        timer.start(giveUpAfter, &m_services.clock, std::chrono::milliseconds(limitsPatience), given);
        co_await account.fetchLimitsOnce(given.get_token());
    }
    const double asked = m_services.clock.hostNow();
    setAskingDesktop(m_services.platform.capture->hasOwnPicker());
    auto chosen = co_await m_services.platform.capture->choose(picked->request, stop);
    setAskingDesktop(false);
    if (!chosen)
        co_return std::unexpected(asFailure(std::move(chosen.error())));
    // The dialog that asked fades away, and shall not be the first thing that is recorded.
    if (m_services.platform.capture->hasOwnPicker() && m_services.clock.hostNow() - asked > dialogSeconds)
        co_await m_services.clock.sleep(dialogFades, stop);
    const std::shared_ptr<CaptureSource> source = chosen->source;
    rememberChoice(*source);
    const Display display = source->facts().display.value_or(picked->display);

    const CaptureSettings &settings = m_services.settings;
    if (const int seconds = settings.countdownSeconds(); seconds >= 1 && !skipCountdown)
        if (!co_await m_services.ui.countDown(seconds, display, stop))
            co_return std::unexpected(Failure(Cancelled{}));
    if (stop.stop_requested())
        co_return std::unexpected(Failure(Cancelled{}));

    RecordingOptions options;
    options.target = CaptureTarget::of(*source);
    options.micEnabled = settings.micEnabled();
    options.micDeviceId = settings.micDeviceId();
    options.systemAudioEnabled = settings.systemAudioEnabled();
    options.separateCursor = settings.separateCursor();
    options.autoCamera = settings.autoCamera();
    if (settings.cameraEnabled())
        options.recordingId = newRecordingId();
    Platform &platform = m_services.platform;
    const auto engine = std::make_shared<RecordingEngine>(
        RecordingPorts{*platform.streams, source, *platform.input, m_services.clock}, std::move(options));
    const auto hudState = std::make_shared<RecordingHUDState>(m_services.clock, account.recordingCapSeconds(),
                                                              settings.micEnabled());
    engine->onMicLevel = [state = std::weak_ptr(hudState)](double level) {
        if (const auto hud = state.lock())
            hud->micLevel = level;
    };
    engine->onStreamDeath = [this](Failure failure) {
        qCCritical(logCapture, "stream died mid-recording: %s", description(failure).c_str());
        stopRecording(failure);
    };
    co_await m_services.ui.leavePicture(recordedOf(*source, display), stop);
    if (auto started = co_await engine->start(stop); !started)
        co_return started;
    m_engine = engine;
    m_hudState = hudState;
    installHUD(display);
    Analytics::shared().track(
        "cap.recording_started",
        {{"tool", toolName(outcome)}, {"camera", settings.cameraEnabled()}, {"mic", settings.micEnabled()}});
    if (settings.cameraEnabled())
        m_camera.start(engine, display);
    co_return std::expected<void, Failure>();
}

void RecordingFlow::setAskingDesktop(bool isAsking) {
    if (std::exchange(m_isAskingDesktop, isAsking) != isAsking)
        changed();
}

void RecordingFlow::rememberChoice(const CaptureSource &source) {
    if (auto *picker = m_activeRecordingOutcome
                           ? std::get_if<SelectionOutcome::DesktopPicker>(&m_activeRecordingOutcome->picked)
                           : nullptr)
        picker->what.restoreToken = source.restoreToken();
}

void RecordingFlow::installHUD(const Display &display) {
    m_hudState->onStop = [this] { stopRecording(); };
    m_hudState->onPauseToggle = [this] { togglePause(); };
    m_hudState->onRestart = [this] { discardRecording(true); };
    m_hudState->onDelete = [this] { discardRecording(false); };
    if (stopKeys)
        m_hudState->setStopKeys(stopKeys());
    // The plan's limit may arrive late, and may change.
    m_accountObservation = m_services.account.observe([this] { followCap(); });
    m_hudState->startTimer();
    m_services.ui.showHUD(m_hudState, display);
}

void RecordingFlow::followCap() {
    if (m_hudState)
        m_hudState->setCap(m_services.account.recordingCapSeconds());
}

Task<OneShot<bool>> RecordingFlow::enterQueue(std::stop_token stop) {
    const OneShot<bool> mine;
    const std::optional<OneShot<bool>> before = std::exchange(m_recordingOpQueue, mine);
    if (before)
        co_await before->wait(stop);
    co_return mine;
}

void RecordingFlow::togglePause() {
    if (m_isTogglingPause || !m_engine)
        return;
    m_isTogglingPause = true;
    m_scope.start(this, &RecordingFlow::pauseInTurn);
}

Task<> RecordingFlow::pauseInTurn(std::stop_token stop) {
    const OneShot<bool> done = co_await enterQueue(stop);
    const std::shared_ptr<RecordingEngine> engine = m_engine;
    const std::shared_ptr<RecordingHUDState> hud = m_hudState;
    if (engine && !stop.stop_requested()) {
        const bool resumes = engine->isPaused();
        if (!resumes)
            hud->pause();
        m_camera.pauseBegins(!resumes);
        const auto toggled = resumes ? co_await engine->resume(stop) : co_await engine->pause(stop);
        if (!toggled && !std::holds_alternative<Cancelled>(toggled.error()))
            qCCritical(logCapture, "pause failed: %s", description(toggled.error()).c_str());
        // A stop may have come meanwhile.
        if (m_engine == engine) {
            hud->isPaused = engine->isPaused();
            if (!engine->isPaused())
                hud->startTimer();
            co_await m_camera.pauseEnds(engine, stop);
        }
    }
    m_isTogglingPause = false;
    changed();
    done.resolve(true);
}

RecordingFlow::Taken RecordingFlow::takeOut() {
    m_accountObservation.reset();
    m_hudState->stop();
    m_services.ui.hideHUD();
    // Its own timer may have asked for this, and a button of the panel: it goes when they have returned.
    m_scope.start([](std::shared_ptr<RecordingHUDState>, Clock *clock,
                     std::stop_token stop) -> Task<> { co_await clock->sleep(0ms, stop); },
                  std::exchange(m_hudState, nullptr), &m_services.clock);
    ++m_finalizing;
    return {std::exchange(m_engine, nullptr), m_camera.takeOut()};
}

void RecordingFlow::stopRecording(const std::optional<Failure> &sessionError) {
    if (!m_engine)
        return;
    Taken taken = takeOut();
    Cards cards;
    cards.screen = m_services.shelf.addProcessing(recordingCard);
    if (taken.camera.camera)
        cards.camera = m_services.shelf.addProcessing(cameraCard);
    m_scope.start(this, &RecordingFlow::finalizeInTurn, std::move(taken), cards, sessionError);
    changed();
}

Task<> RecordingFlow::finalizeInTurn(Taken taken, Cards cards, std::optional<Failure> cause,
                                     std::stop_token stop) {
    const OneShot<bool> done = co_await enterQueue(stop);
    auto segments = co_await finalizeScreen(taken, cards.screen, std::move(cause), stop);
    if (taken.camera.camera && !stop.stop_requested())
        co_await finalizeCamera(taken, cards.camera, std::move(segments), stop);
    if (stop.stop_requested())
        co_return;
    done.resolve(true);
    finalized();
}

Task<std::vector<RecordedSegment>>
RecordingFlow::finalizeScreen(Taken taken, QUuid card, std::optional<Failure> cause, std::stop_token stop) {
    auto outcome = co_await taken.engine->stop(stop);
    if (stop.stop_requested())
        co_return std::vector<RecordedSegment>();
    if (!outcome) {
        qCCritical(logCapture, "record stop failed: %s", description(outcome.error()).c_str());
        const std::string why = cause ? description(*cause) : description(outcome.error());
        m_services.shelf.update(card, ShelfItem::Failed{"Recording failed to save: " + why});
        if (outcome.error().isRecoverable)
            m_services.handover.keepUnsaved(taken.engine->journal()->path(), card);
        co_return std::vector<RecordedSegment>();
    }
    if (outcome->isPartial)
        qCCritical(logCapture, "recording salvaged partially, final segment lost");
    const double seconds = double(outcome->capture.durationMs.value_or(0)) / 1000;
    Analytics::shared().track(
        "cap.recording_completed",
        {{"duration_sec", std::int64_t(std::llround(seconds))}, {"partial", outcome->isPartial}});
    if (cause)
        m_services.shelf.setNote(card, description(*cause));
    else if (outcome->soundProblem)
        m_services.shelf.setNote(card, "Recorded without sound: " + outcome->soundProblem->description());
    else if (const auto &problem = taken.camera.problem)
        m_services.shelf.setNote(card, "Recorded without camera: " + problem->description());
    const auto capture = std::make_shared<const CaptureResult>(std::move(outcome->capture));
    m_services.shelf.attach(capture, card);
    m_services.handover.deliver(capture, card, outcome->journal);
    co_await m_services.handover.safe(stop);
    co_return std::move(outcome->segments);
}

Task<> RecordingFlow::finalizeCamera(Taken taken, QUuid card, std::vector<RecordedSegment> screen,
                                     std::stop_token stop) {
    const std::optional<PlatformError> problem = taken.camera.camera->problem();
    auto recorded = co_await taken.camera.camera->stop(std::move(screen), stop);
    if (stop.stop_requested())
        co_return;
    if (!recorded) {
        m_services.shelf.update(card, ShelfItem::Failed{cameraNotSaved});
        co_return;
    }
    if (problem)
        m_services.shelf.setNote(card, problem->description());
    const auto capture = std::make_shared<const CaptureResult>(std::move(*recorded));
    m_services.shelf.attach(capture, card);
    m_services.handover.deliver(capture, card, taken.engine->journal()->path(), RecordingLayer::camera);
    co_await m_services.handover.safe(stop);
}

void RecordingFlow::finalized() {
    --m_finalizing;
    m_scope.start(this, &RecordingFlow::returnMemory);
    changed();
}

Task<> RecordingFlow::returnMemory(std::stop_token stop) {
    // Pictures and movies leave holes in the memory of many threads, which would stay until the next
    // recording; their last parts go some moments after its end.
    if (!co_await m_services.clock.sleep(1s, stop) || isRecording() || isFinalizingRecording())
        co_return;
    co_await runBlocking([] { ::malloc_trim(0); }, stop);
}

void RecordingFlow::discardRecording(bool restart) {
    if (!m_engine)
        return;
    Analytics::shared().track("cap.recording_discarded");
    m_scope.start(this, &RecordingFlow::discardInTurn, takeOut(), restart);
    changed();
}

Task<> RecordingFlow::discardInTurn(Taken taken, bool restart, std::stop_token stop) {
    const OneShot<bool> done = co_await enterQueue(stop);
    const auto outcome = co_await taken.engine->stop(stop);
    if (taken.camera.camera && !stop.stop_requested())
        co_await taken.camera.camera->cancel(stop);
    if (stop.stop_requested())
        co_return;
    if (!outcome) {
        qCCritical(logCapture, "record discard failed: %s", description(outcome.error()).c_str());
    } else {
        // Into the trash, out of which it can be taken back.
        const auto discarded = co_await runBlocking(
            [file = outcome->capture.fileURL, journal = outcome->journal] {
                const auto moved = Trash::moveToTrash(file);
                std::error_code failure;
                if (!moved)
                    std::filesystem::remove(file, failure);
                if (!failure)
                    RecordingRecovery::forgetWhole(journal);
                return failure;
            },
            stop);
        if (discarded && *discarded)
            qCCritical(logCapture, "record discard failed: %s", discarded->message().c_str());
    }
    done.resolve(true);
    finalized();
    if (restart && m_activeRecordingOutcome)
        startRecording(*m_activeRecordingOutcome, true);
}

void RecordingFlow::finishScreenshot(SelectionOutcome outcome) {
    m_scope.start(this, &RecordingFlow::takeStill, std::move(outcome));
}

Task<> RecordingFlow::takeStill(SelectionOutcome outcome, std::stop_token stop) {
    auto picked = requestOf(outcome);
    if (!picked)
        co_return;
    picked->request.isForStill = true;
    std::string problem;
    if (const auto chosen = co_await m_services.platform.capture->choose(picked->request, stop)) {
        co_await m_services.ui.leavePicture(recordedOf(*chosen->source, picked->display), stop);
        auto still = co_await ScreenshotEngine::capture(m_services.platform.stills.get(),
                                                        CaptureTarget::of(*chosen->source), stop);
        // What is recorded by now has its own picture to be left.
        if (!isRecording() && !m_isStartingRecording)
            m_services.ui.hideHUD();
        if (still) {
            Analytics::shared().track("cap.screenshot_captured", {{"tool", toolName(outcome)}});
            m_services.handover.deliver(std::make_shared<const CaptureResult>(std::move(*still)),
                                        std::nullopt);
            co_return;
        }
        problem = description(asFailure(std::move(still.error())));
    } else {
        problem = description(asFailure(chosen.error()));
    }
    // Empty: it was cancelled.
    if (problem.empty())
        co_return;
    qCCritical(logCapture, "screenshot failed: %s", problem.c_str());
    m_services.shelf.update(m_services.shelf.addProcessing(screenshotCard), ShelfItem::Failed{problem});
}

} // namespace vantrell
