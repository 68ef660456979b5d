// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingEngine.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieReader.h"
#include "Platform/DisplayLayout.h"
#include "Recording/FinishedRecording.h"
#include "Recording/MovieStitcher.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <utility>

namespace vantrell {

namespace {

/// What is wanted, as far as this desktop lets it: the metadata promises nothing that is not there.
RecordingOptions asFarAsPossible(RecordingOptions wanted, const RecordingPorts &ports) {
    wanted.separateCursor &= ports.source->separatesPointer();
    // Zooming follows the clicks.
    wanted.autoCamera &= ports.input.seesClicks();
    return wanted;
}

} // namespace

RecordingEngine::RecordingEngine(RecordingPorts ports, RecordingOptions options)
    : m_ports(std::move(ports)), m_options(asFarAsPossible(std::move(options), m_ports)),
      m_eventRecorder(m_ports.input, m_ports.clock, m_options.target.display) {}

RecordingEngine::~RecordingEngine() = default;

Task<std::expected<void, Failure>> RecordingEngine::start(std::stop_token stop) {
    if (onMicLevel)
        m_meter = std::make_unique<MicrophoneMeter>(m_ports.clock, onMicLevel);
    m_journal =
        std::make_shared<RecordingJournal>(CaptureStorage::newFileURL("recording"), m_options, m_ports.clock);
    m_eventRecorder.onEvent = [journal = m_journal.get()](const RawEvent &event) {
        journal->addEvent(event);
    };
    if (auto opened = co_await openSegment(stop); !opened) {
        m_journal->discard();
        co_return std::unexpected(std::move(opened.error()));
    }
    m_startedAt = m_ports.clock.wallNow();
    followSource();
    m_eventRecorder.start();
    qCInfo(logCapture, "recording started");
    co_return std::expected<void, Failure>();
}

void RecordingEngine::followSource() {
    const CaptureTarget &target = m_options.target;
    m_windowTracker.emplace(
        [source = m_ports.source, display = target.display, picture = *m_picture] {
            return source->place().transform(
                [&](const PixelRect &place) { return inPointsOf(display, shownArea(place, picture)); });
        },
        Point{target.display.frame.x, target.display.frame.y}, target.rect, m_ports.clock);
    m_eventRecorder.liveCaptureRect = [this]() -> std::optional<Rect> {
        const Rect now = m_windowTracker->currentRect();
        // A display that stays where it was need not be told of with every event.
        return m_options.target.window || now != m_options.target.rect ? std::optional(now) : std::nullopt;
    };
}

Task<std::expected<void, Failure>> RecordingEngine::pause(std::stop_token stop) {
    if (!m_current || m_isPaused)
        co_return std::expected<void, Failure>();
    m_eventRecorder.pause();
    auto finalized = co_await finalize(std::exchange(m_current, nullptr), stop);
    m_isPaused = true;
    if (!finalized)
        co_return std::unexpected(std::move(finalized.error()));
    qCInfo(logCapture, "recording paused");
    co_return std::expected<void, Failure>();
}

Task<std::expected<void, Failure>> RecordingEngine::resume(std::stop_token stop) {
    if (!m_isPaused)
        co_return std::expected<void, Failure>();
    if (auto opened = co_await openSegment(stop); !opened)
        co_return std::unexpected(std::move(opened.error()));
    m_isPaused = false;
    m_eventRecorder.resume();
    qCInfo(logCapture, "recording resumed");
    co_return std::expected<void, Failure>();
}

std::optional<double> RecordingEngine::anchorHostTime() const {
    if (!m_finished.empty())
        return m_finished.front().anchorHostTime;
    return m_current ? std::optional(m_current->anchorHostTime()) : std::nullopt;
}

CaptureStreamConfiguration RecordingEngine::streamConfiguration() const {
    CaptureStreamConfiguration configuration;
    configuration.output = m_picture;
    if (!m_picture && !m_options.target.source.isEmpty())
        configuration.output = m_options.target.source.size();
    configuration.cursor = !m_options.separateCursor        ? CursorMode::inPicture
                           : m_ports.source->tellsPointer() ? CursorMode::asMetadata
                                                            : CursorMode::leftOut;
    configuration.capturesMicrophone = m_options.micEnabled;
    configuration.microphoneId = m_options.micDeviceId;
    configuration.capturesSystemAudio = m_options.systemAudioEnabled;
    return configuration;
}

Task<std::expected<void, Failure>> RecordingEngine::openSegment(std::stop_token stop) {
    const auto segment = std::make_shared<StreamSegment>(CaptureStorage::newFileURL("mov"), m_ports.clock);
    if (m_options.micEnabled && m_meter)
        segment->onMicSample = [meter = m_meter.get()](std::span<const float> samples) {
            meter->take(samples);
        };
    segment->onSpontaneousEnd = [this](std::optional<PlatformError> error) {
        if (onStreamDeath)
            onStreamDeath(error ? Failure(std::move(*error)) : Failure(RecordingError::streamEnded));
    };
    if (m_ports.source->tellsPointer())
        segment->onPointerMoved = [this](double hostTime, const Point &onPicture) {
            if (const auto place = m_ports.source->place())
                m_eventRecorder.pointerReported(hostTime, {place->x + onPicture.x * place->width,
                                                           place->y + onPicture.y * place->height});
        };
    segment->onFirstFrame = [this](double hostTime) { m_journal->addAnchor(hostTime); };
    // Named before it exists: a movie that is there and not named would not be found again.
    m_journal->addSegment(segment->fileURL());
    CaptureStreamConfiguration configuration = streamConfiguration();
    auto started =
        co_await segment->start(&m_ports.streams, m_ports.source.get(), std::move(configuration), stop);
    if (!started)
        co_return std::unexpected(std::move(started.error()));
    m_current = segment;
    m_picture = segment->pictureSize();
    co_return std::expected<void, Failure>();
}

Task<std::expected<void, Failure>> RecordingEngine::finalize(std::shared_ptr<StreamSegment> segment,
                                                             std::stop_token stop) {
    auto finalized = co_await finish(segment, stop);
    if (finalized || std::holds_alternative<Cancelled>(finalized.error()))
        co_return finalized;
    m_lossCause = finalized.error();
    if (segment->hasFrames())
        m_lost.push_back({segment->fileURL(), segment->anchorHostTime(), 0});
    co_return finalized;
}

Task<std::expected<void, Failure>> RecordingEngine::finish(std::shared_ptr<StreamSegment> segment,
                                                           std::stop_token stop) {
    auto summary = co_await segment->finish(stop);
    if (!summary)
        co_return std::unexpected(std::move(summary.error()));
    m_droppedFrames += summary->droppedFrames;
    if (summary->soundProblem)
        m_soundProblem = summary->soundProblem;
    const auto facts =
        co_await runBlocking([file = segment->fileURL()] { return readMovieFacts(file); }, stop);
    if (!facts)
        co_return std::unexpected(asFailure(facts.error()));
    m_finished.push_back({segment->fileURL(), segment->anchorHostTime(), facts->durationMs});
    co_return std::expected<void, Failure>();
}

std::vector<RecordedSegment> RecordingEngine::usableSegments() {
    std::vector<RecordedSegment> kept;
    for (RecordedSegment &segment : std::exchange(m_finished, {})) {
        if (segment.durationMs > 0) {
            kept.push_back(std::move(segment));
            continue;
        }
        std::error_code ignored;
        std::filesystem::remove(segment.fileURL, ignored);
    }
    return kept;
}

Task<std::expected<RecordingStopOutcome, RecordingStopFailure>> RecordingEngine::stop(std::stop_token stop) {
    const std::vector<RawEvent> events = m_eventRecorder.stop();
    if (m_current) {
        const auto finalized = co_await finalize(std::exchange(m_current, nullptr), stop);
        if (!finalized && std::holds_alternative<Cancelled>(finalized.error()))
            co_return std::unexpected(RecordingStopFailure{finalized.error(), {}, true});
        if (!finalized)
            qCCritical(logCapture, "final segment lost, salvaging earlier segments: %s",
                       description(finalized.error()).c_str());
    }
    // The desktop tells the user that the screen is shared for as long as anybody holds it.
    m_eventRecorder.liveCaptureRect = nullptr;
    m_windowTracker.reset();
    m_ports.source.reset();
    m_finished = usableSegments();
    if (m_finished.empty() || !m_startedAt) {
        RecordingStopFailure nothing{CaptureError::encodeFailed, m_lossCause, !m_lost.empty()};
        co_return std::unexpected(co_await giveUp(std::move(nothing), stop));
    }

    auto capture = co_await package(events, stop);
    if (!capture)
        co_return std::unexpected(co_await giveUp({std::move(capture.error()), {}, true}, stop));
    RecordingStopOutcome outcome;
    outcome.capture = std::move(*capture);
    outcome.segments = m_finished;
    outcome.isPartial = m_lossCause.has_value();
    outcome.isRestRecoverable = co_await keepLostSegments(events, stop);
    outcome.journal = m_journal->path();
    if (!co_await m_journal->close(stop))
        co_return std::unexpected(RecordingStopFailure{Cancelled{}, {}, true});
    outcome.droppedFrames = m_droppedFrames;
    outcome.soundProblem = m_soundProblem;
    co_return outcome;
}

/// Joins the segments and describes the result.
Task<std::expected<CaptureResult, Failure>> RecordingEngine::package(std::vector<RawEvent> events,
                                                                     std::stop_token stop) {
    const auto movie = co_await joinedMovie(stop);
    if (!movie)
        co_return std::unexpected(movie.error());
    m_journal->setMovie(*movie);
    FinishedRecording recording{*movie,
                                m_options,
                                *m_startedAt,
                                std::move(events),
                                m_finished,
                                m_ports.clock.wallNow(),
                                m_lossCause ? " (partial)" : ""};
    auto capture = co_await runBlocking([recording] { return describeRecording(recording); }, stop);
    if (!capture)
        co_return std::unexpected(asFailure(std::move(capture.error())));
    co_return std::move(*capture);
}

Task<std::expected<std::filesystem::path, Failure>> RecordingEngine::joinedMovie(std::stop_token stop) {
    if (m_finished.size() == 1)
        // A copy by hand: a task takes what it returns, also from a member.
        co_return std::filesystem::path(m_finished.front().fileURL);
    std::vector<std::filesystem::path> files;
    for (const RecordedSegment &segment : m_finished)
        files.push_back(segment.fileURL);
    co_return co_await MovieStitcher::stitch(std::move(files), stop);
}

/// The journal stays when there is something that it could recover.
Task<RecordingStopFailure> RecordingEngine::giveUp(RecordingStopFailure failure, std::stop_token stop) {
    if (!m_journal)
        co_return failure;
    if (failure.isRecoverable)
        co_await m_journal->close(stop);
    else
        m_journal->discard();
    co_return failure;
}

/// The recording's own journal goes with the capture that is made of the other segments. True when there is
/// something that can be recovered.
Task<bool> RecordingEngine::keepLostSegments(std::vector<RawEvent> events, std::stop_token stop) {
    if (m_lost.empty())
        co_return false;
    RecordingJournal rest(CaptureStorage::newFileURL("recording"), m_options, m_ports.clock);
    for (const RecordedSegment &segment : m_lost) {
        rest.addSegment(segment.fileURL);
        rest.addAnchor(segment.anchorHostTime);
    }
    for (const RawEvent &event : events)
        rest.addEvent(event);
    co_await rest.close(stop);
    co_return true;
}

} // namespace vantrell
