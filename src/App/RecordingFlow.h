// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/CameraFlow.h"
#include "App/CaptureHandover.h"
#include "App/ServiceAccount.h"
#include "App/UserInterface.h"
#include "Capture/CaptureTarget.h"
#include "Overlay/RecordingHUDState.h"
#include "Overlay/SelectionOutcome.h"
#include "Platform/CaptureRequest.h"
#include "Platform/Platform.h"
#include "Platform/SessionMonitor.h"
#include "Recording/Failure.h"
#include "Recording/RecordingEngine.h"
#include "Session/CaptureSettings.h"
#include "Shelf/ShelfStore.h"
#include "Support/Clock.h"
#include "Support/OneShot.h"
#include "Support/TaskScope.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <variant>
#include <vector>

namespace vantrell {

/// Turns what the user picked into a recording or a still, and that into a capture on the shelf.
///
///     idle --start--> starting (countdown) --> recording <--> paused
///      ▲                  │ cancelled, failed      │ stop, discard, the stream dies
///      └──────────────────┴──────── finalising <───┘
///
/// Pausing, finishing and discarding run one after another. A recording that was stopped is out of the way at
/// once: the next can start while it is being saved. Main thread.
class RecordingFlow {
public:
    /// All outlive the flow.
    struct Services {
        Platform &platform;
        SessionMonitor &session;
        UserInterface &ui;
        CaptureSettings &settings;
        ServiceAccount &account;
        CaptureHandover &handover;
        ShelfStore &shelf;
        Clock &clock;
    };

    explicit RecordingFlow(Services services);
    RecordingFlow(const RecordingFlow &) = delete;
    RecordingFlow &operator=(const RecordingFlow &) = delete;

    /// Ignored while a recording exists or starts.
    void startRecording(SelectionOutcome outcome, bool skipCountdown);
    void togglePause();
    /// `sessionError`: why the stream ended by itself. Nothing when there is no recording.
    void stopRecording(const std::optional<Failure> &sessionError = std::nullopt);
    /// What was recorded goes to the desktop's trash. With `restart` the same is recorded anew, without a
    /// countdown.
    void discardRecording(bool restart);
    /// A still of what was picked.
    void finishScreenshot(SelectionOutcome outcome);
    /// Ends a start that is under way, countdown included.
    void cancelStart() { m_startScope.cancel(); }

    bool isRecording() const { return m_engine != nullptr; }
    /// Not before the camera's file is whole too: until then nothing can be toggled.
    bool isPaused() const { return m_engine && m_engine->isPaused() && !m_isTogglingPause; }
    bool isStartingRecording() const { return m_isStartingRecording; }
    /// A start waits until the desktop has said what may be recorded.
    bool isAskingDesktop() const { return m_isAskingDesktop; }
    bool isFinalizingRecording() const { return m_finalizing > 0; }
    /// Recorded time without the pauses; 0 when nothing is recorded.
    double elapsedSeconds() const { return m_hudState ? m_hudState->elapsedSeconds.get() : 0; }

    /// A recording has started, been paused or resumed, ended, or was saved; a start waits or goes on.
    std::function<void()> onChange;
    /// The countdown was cancelled.
    std::function<void()> onStartCancelled;
    /// Whether a hot key ends the recording.
    std::function<bool()> hasStopKey;

private:
    struct Picked {
        CaptureRequest request;
        Display display;
        bool record = true;
    };
    static std::optional<Picked> requestOf(const SelectionOutcome &outcome);

    void failStart(const std::string &why);
    void showFailedStart(const std::string &why);
    Task<> start(SelectionOutcome outcome, bool skipCountdown, std::stop_token stop);
    Task<std::expected<void, Failure>> begin(SelectionOutcome outcome, bool skipCountdown,
                                             std::stop_token stop);
    Task<> takeStill(SelectionOutcome outcome, std::stop_token stop);
    struct Taken {
        std::shared_ptr<RecordingEngine> engine;
        CameraFlow::Taken camera;
    };
    /// From here on nothing is being recorded, as far as anybody can see.
    Taken takeOut();
    void installHUD(const Display &display);
    /// Recorded anew, it is the same thing again, without asking.
    void rememberChoice(const CaptureSource &source);
    void setAskingDesktop(bool isAsking);
    void followCap();

    /// Runs the operations of recordings one after another.
    Task<OneShot<bool>> enterQueue(std::stop_token stop);
    Task<> pauseInTurn(std::stop_token stop);
    struct Cards {
        QUuid screen;
        QUuid camera;
    };
    Task<> finalizeInTurn(Taken taken, Cards cards, std::optional<Failure> cause, std::stop_token stop);
    /// The movie's segments; none when it could not be saved.
    Task<std::vector<RecordedSegment>> finalizeScreen(Taken taken, QUuid card, std::optional<Failure> cause,
                                                      std::stop_token stop);
    Task<> finalizeCamera(Taken taken, QUuid card, std::vector<RecordedSegment> screen, std::stop_token stop);
    Task<> discardInTurn(Taken taken, bool restart, std::stop_token stop);
    void finalized();
    Task<> returnMemory(std::stop_token stop);
    void changed();

    const Services m_services;
    std::shared_ptr<RecordingEngine> m_engine;
    std::shared_ptr<RecordingHUDState> m_hudState;
    CameraFlow m_camera;
    Observation m_accountObservation;
    std::optional<SelectionOutcome> m_activeRecordingOutcome;
    bool m_isStartingRecording = false;
    bool m_isAskingDesktop = false;
    bool m_isTogglingPause = false;
    int m_finalizing = 0;
    /// The end of the operation that was queued last.
    std::optional<OneShot<bool>> m_recordingOpQueue;
    TaskScope m_startScope;
    TaskScope m_scope;
};

} // namespace vantrell
