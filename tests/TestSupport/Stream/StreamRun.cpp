// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Stream/StreamRun.h"

#include "Support/HostTime.h"
#include "TestSupport/RunTask.h"

#include <utility>

namespace vantrell::testing {

StreamRun::StreamRun(CaptureStreamFactory &streams, std::shared_ptr<CaptureSource> source, CursorMode cursor)
    : m_source(std::move(source)) {
    CaptureStreamConfiguration configuration;
    configuration.cursor = cursor;
    configuration.outputFile = movie();
    CaptureStreamEvents events;
    events.firstFrame = [this](double hostTime) {
        const std::scoped_lock lock(m_mutex);
        ++m_firstFrames;
        m_firstFrame = hostTime;
    };
    events.pointerMoved = [this](double, Point onPicture) {
        const std::scoped_lock lock(m_mutex);
        m_pointers.push_back(onPicture);
    };
    events.stoppedWithError = [this](PlatformError error) {
        const std::scoped_lock lock(m_mutex);
        m_end = std::move(error);
    };
    events.recordingFinished = [this](RecordingSummary summary) {
        const std::scoped_lock lock(m_mutex);
        m_result = summary;
    };
    events.recordingFailed = [this](PlatformError error) {
        const std::scoped_lock lock(m_mutex);
        m_result = std::unexpected(std::move(error));
    };
    m_stream = streams.makeStream(*m_source, std::move(configuration), std::move(events));
}

StreamRun::~StreamRun() = default;

std::vector<Point> StreamRun::pointers() const {
    const std::scoped_lock lock(m_mutex);
    return m_pointers;
}

std::expected<void, PlatformError> StreamRun::start() {
    auto started = runTask(m_stream->start({}));
    m_startedAt = hostNow();
    if (!started)
        return std::unexpected(std::get<PlatformError>(started.error()));
    return {};
}

std::expected<RecordingSummary, PlatformError> StreamRun::stop() {
    m_stoppedAt = hostNow();
    m_stream->stop();
    const bool ended = eventually([this] {
        const std::scoped_lock lock(m_mutex);
        return m_result.has_value();
    });
    if (!ended)
        return std::unexpected(PlatformError{"test", 1, "the stream never reported an end"});
    return *m_result;
}

std::optional<PlatformError> StreamRun::spontaneousEnd() {
    eventually([this] {
        const std::scoped_lock lock(m_mutex);
        return m_end.has_value();
    });
    const std::scoped_lock lock(m_mutex);
    return m_end;
}

std::optional<double> StreamRun::firstFrame() const {
    const std::scoped_lock lock(m_mutex);
    return m_firstFrame;
}

int StreamRun::firstFrames() const {
    const std::scoped_lock lock(m_mutex);
    return m_firstFrames;
}

std::shared_ptr<CaptureSource> chosen(CaptureBackend &backend, CaptureRequest request) {
    const auto choice = runTask(backend.choose(std::move(request), {}));
    return choice ? choice->source : nullptr;
}

std::shared_ptr<CaptureSource> chosenArea(CaptureBackend &backend, const PixelRect &area) {
    return chosen(backend, {CaptureRequest::Area{area}});
}

} // namespace vantrell::testing
