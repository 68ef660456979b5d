// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingEngine.h"

#include "Capture/CaptureStorage.h"
#include "Capture/ScreenshotEngine.h"
#include "Capture/Thumbnailer.h"
#include "Media/MovieReader.h"
#include "Media/PosterFrame.h"
#include "Platform/DisplayLayout.h"
#include "Recording/MovieStitcher.h"
#include "Recording/SidecarEvents.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <cmath>
#include <utility>

namespace vantrell {

namespace {

/// What the finished movie gives besides itself.
struct MovieFindings {
    double durationMs = 0;
    QImage poster;
    std::optional<std::string> thumbnail;
};

std::expected<MovieFindings, PlatformError> inspect(const std::filesystem::path &movie) {
    const auto facts = readMovieFacts(movie);
    if (!facts)
        return std::unexpected(facts.error());
    MovieFindings findings{facts->durationMs, {}, {}};
    if (auto poster = decodePosterFrame(movie))
        findings.poster = std::move(*poster);
    findings.thumbnail = Thumbnailer::jpegThumbnail(findings.poster);
    return findings;
}

} // namespace

RecordingEngine::RecordingEngine(RecordingPorts ports, RecordingOptions options)
    : m_ports(std::move(ports)), m_options(std::move(options)),
      m_eventRecorder(m_ports.input, m_ports.clock, m_options.target.display) {}

RecordingEngine::~RecordingEngine() = default;

Task<std::expected<void, Failure>> RecordingEngine::start(std::stop_token stop) {
    const RecordingTarget &target = m_options.target;
    if (onMicLevel)
        m_meter = std::make_unique<MicrophoneMeter>(m_ports.clock, onMicLevel);
    if (auto opened = co_await openSegment(stop); !opened)
        co_return std::unexpected(std::move(opened.error()));
    m_startedAt = m_ports.clock.wallNow();
    if (target.window && m_ports.windowBounds) {
        m_windowTracker.emplace(
            [query = m_ports.windowBounds, id = target.window->id, display = target.display] {
                return query(id).transform(
                    [&display](const PixelRect &bounds) { return inPointsOf(display, bounds); });
            },
            Point{target.display.frame.x, target.display.frame.y}, target.rect, m_ports.clock);
        m_eventRecorder.liveCaptureRect = [this]() -> std::optional<Rect> {
            return m_windowTracker->currentRect();
        };
    }
    m_eventRecorder.start();
    qCInfo(logCapture, "recording started");
    co_return std::expected<void, Failure>();
}

Task<std::expected<void, Failure>> RecordingEngine::pause(std::stop_token stop) {
    if (!m_current || m_isPaused)
        co_return std::expected<void, Failure>();
    m_eventRecorder.paused = true;
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
    m_eventRecorder.paused = false;
    m_eventRecorder.lastMoveLocation.reset();
    qCInfo(logCapture, "recording resumed");
    co_return std::expected<void, Failure>();
}

CaptureStreamConfiguration RecordingEngine::streamConfiguration() const {
    const RecordingTarget &target = m_options.target;
    CaptureStreamConfiguration configuration;
    configuration.displayId = target.display.id;
    if (target.window)
        configuration.window = target.window->id;
    configuration.source = target.source;
    configuration.output = target.source.size();
    configuration.showsCursor = !m_options.separateCursor;
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
    CaptureStreamConfiguration configuration = streamConfiguration();
    auto started = co_await segment->start(&m_ports.capture, std::move(configuration), stop);
    if (!started)
        co_return std::unexpected(Failure(std::move(started.error())));
    m_current = segment;
    co_return std::expected<void, Failure>();
}

Task<std::expected<void, Failure>> RecordingEngine::finalize(std::shared_ptr<StreamSegment> segment,
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
        co_return std::unexpected(Failure(Cancelled{}));
    if (!*facts)
        co_return std::unexpected(Failure(facts->error()));
    m_finished.push_back({segment->fileURL(), segment->anchorHostTime(), (*facts)->durationMs});
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

Task<std::expected<RecordingStopOutcome, Failure>> RecordingEngine::stop(std::stop_token stop) {
    const std::vector<RawEvent> events = m_eventRecorder.stop();
    RecordingStopOutcome outcome;
    if (m_current) {
        const auto finalized = co_await finalize(std::exchange(m_current, nullptr), stop);
        if (!finalized) {
            if (std::holds_alternative<Cancelled>(finalized.error()))
                co_return std::unexpected(finalized.error());
            qCCritical(logCapture, "final segment lost, salvaging earlier segments: %s",
                       description(finalized.error()).c_str());
            outcome.isPartial = true;
        }
    }
    m_finished = usableSegments();
    if (m_finished.empty() || !m_startedAt)
        co_return std::unexpected(Failure(CaptureError::encodeFailed));

    auto movie = co_await joinedMovie(stop);
    if (!movie)
        co_return std::unexpected(std::move(movie.error()));
    const auto findings = co_await runBlocking([file = *movie] { return inspect(file); }, stop);
    if (!findings)
        co_return std::unexpected(Failure(Cancelled{}));
    if (!*findings)
        co_return std::unexpected(Failure(findings->error()));

    CaptureResult &capture = outcome.capture;
    capture.kind = "video";
    capture.mime = "video/quicktime";
    capture.fileURL = *movie;
    capture.metadata = metadata(events, m_finished, (*findings)->durationMs);
    capture.name =
        ScreenshotEngine::captureName("recording", capture.metadata.window, m_ports.clock.wallNow());
    if (outcome.isPartial)
        capture.name += " (partial)";
    capture.previewImage = (*findings)->poster;
    capture.thumbnailJPEG = (*findings)->thumbnail;
    capture.durationMs = std::llround((*findings)->durationMs);
    outcome.droppedFrames = m_droppedFrames;
    outcome.soundProblem = m_soundProblem;
    co_return outcome;
}

Task<std::expected<std::filesystem::path, Failure>> RecordingEngine::joinedMovie(std::stop_token stop) {
    if (m_finished.size() == 1)
        co_return m_finished.front().fileURL;
    std::vector<std::filesystem::path> files;
    for (const RecordedSegment &segment : m_finished)
        files.push_back(segment.fileURL);
    co_return co_await MovieStitcher::stitch(std::move(files), stop);
}

CaptureMetadata RecordingEngine::metadata(const std::vector<RawEvent> &events,
                                          const std::vector<RecordedSegment> &segments,
                                          double durationMs) const {
    const RecordingTarget &target = m_options.target;
    CaptureMetadata metadata;
    metadata.type = "recording";
    metadata.capturedAt = iso8601(*m_startedAt);
    metadata.source = target.kind();
    metadata.display = {{target.display.frame.width, target.display.frame.height}, target.scale};
    if (target.window)
        metadata.window = ScreenshotEngine::windowInfo(*target.window, target.rect);
    if (metadata.source == "region")
        metadata.region = target.rect;
    metadata.pixelSize = target.source.size();
    RecordingInfo recording;
    recording.fps = m_options.fps;
    recording.durationMs = durationMs;
    recording.events = sidecarEvents(events, target.display.frame, target.rect, segments);
    recording.anchorHostTime = segments.front().anchorHostTime;
    recording.cursorInVideo = !m_options.separateCursor;
    recording.autoCamera = m_options.autoCamera;
    metadata.recording = std::move(recording);
    return metadata;
}

} // namespace vantrell
