// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureSource.h"
#include "Platform/CaptureStreamFactory.h"
#include "Platform/InputMonitor.h"
#include "Recording/Failure.h"
#include "Recording/InputEventRecorder.h"
#include "Recording/MicrophoneMeter.h"
#include "Recording/RecordedSegment.h"
#include "Recording/RecordingJournal.h"
#include "Recording/RecordingOptions.h"
#include "Recording/RecordingStopFailure.h"
#include "Recording/RecordingStopOutcome.h"
#include "Recording/StreamSegment.h"
#include "Recording/WindowFrameTracker.h"
#include "Support/Clock.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// What a recording works with. All that is referred to outlives the engine.
struct RecordingPorts {
    CaptureStreamFactory &streams;
    /// What is recorded; the options' target describes it.
    std::shared_ptr<CaptureSource> source;
    InputMonitor &input;
    Clock &clock;
};

/// Records one screen recording as a chain of segments. Main thread; one operation at a time.
///
///     idle --start--> recording --pause--> paused --resume--> recording ... --stop--> stopped
///
/// Each stretch of `recording` is one movie file; `stop`, from recording or paused, joins them without
/// re-encoding. A failed operation leaves the files of earlier segments where they are; a start that fails or
/// is cancelled leaves nothing.
///
/// From the start until the capture that `stop` returned has been taken over, a journal beside the movies
/// lets RecordingRecovery make the capture should the process, or the stop, not get there.
class RecordingEngine {
public:
    RecordingEngine(RecordingPorts ports, RecordingOptions options);
    ~RecordingEngine();
    RecordingEngine(const RecordingEngine &) = delete;
    RecordingEngine &operator=(const RecordingEngine &) = delete;

    /// The microphone's level, 0...1, at most ten times a second. Set before `start`.
    std::function<void(double)> onMicLevel;
    /// The stream died on its own. What it recorded is kept: call `stop`. Set before `start`.
    std::function<void(Failure)> onStreamDeath;

    Task<std::expected<void, Failure>> start(std::stop_token stop);
    /// Does nothing unless recording.
    Task<std::expected<void, Failure>> pause(std::stop_token stop);
    /// Does nothing unless paused.
    Task<std::expected<void, Failure>> resume(std::stop_token stop);
    /// Once. Lets the source go before it packages what was recorded.
    Task<std::expected<RecordingStopOutcome, RecordingStopFailure>> stop(std::stop_token stop);

    bool isPaused() const { return m_isPaused; }
    std::optional<Clock::WallTime> startedAt() const { return m_startedAt; }
    /// Host time of the recording's first picture, which may lie before the end of `start`: that waits for
    /// the sound devices. None before the start and after the stop.
    std::optional<double> anchorHostTime() const;
    const RecordingOptions &options() const { return m_options; }
    /// For what records beside the screen; null before the start.
    std::shared_ptr<RecordingJournal> journal() const { return m_journal; }

private:
    Task<std::expected<void, Failure>> openSegment(std::stop_token stop);
    Task<std::expected<void, Failure>> finalize(std::shared_ptr<StreamSegment> segment, std::stop_token stop);
    Task<std::expected<void, Failure>> finish(std::shared_ptr<StreamSegment> segment, std::stop_token stop);
    Task<std::expected<CaptureResult, Failure>> package(std::vector<RawEvent> events, std::stop_token stop);
    Task<std::expected<std::filesystem::path, Failure>> joinedMovie(std::stop_token stop);
    Task<RecordingStopFailure> giveUp(RecordingStopFailure failure, std::stop_token stop);
    Task<bool> keepLostSegments(std::vector<RawEvent> events, std::stop_token stop);
    CaptureStreamConfiguration streamConfiguration() const;
    void followSource();
    std::vector<RecordedSegment> usableSegments();

    RecordingPorts m_ports;
    const RecordingOptions m_options;
    InputEventRecorder m_eventRecorder;
    std::optional<WindowFrameTracker> m_windowTracker;
    std::unique_ptr<MicrophoneMeter> m_meter;
    std::shared_ptr<RecordingJournal> m_journal;
    std::optional<Clock::WallTime> m_startedAt;
    std::vector<RecordedSegment> m_finished;
    /// Not finished in time or at all, though pictures came.
    std::vector<RecordedSegment> m_lost;
    std::optional<Failure> m_lossCause;
    std::shared_ptr<StreamSegment> m_current;
    /// Every segment's, and so the movie's; none before the first has started.
    std::optional<PixelSize> m_picture;
    bool m_isPaused = false;
    std::int64_t m_droppedFrames = 0;
    std::optional<PlatformError> m_soundProblem;
};

} // namespace vantrell
