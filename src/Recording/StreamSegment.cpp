// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/StreamSegment.h"

#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"
#include "Support/Log.h"

#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds finishLimit(15);

} // namespace

StreamSegment::StreamSegment(std::filesystem::path fileURL, Clock &clock)
    : m_fileURL(std::move(fileURL)), m_clock(clock), m_self(std::make_shared<StreamSegment *>(this)) {}

StreamSegment::~StreamSegment() {
    *m_self = nullptr;
    // A stream whose file hangs must not hang the interface too: its threads are joined elsewhere.
    if (m_timedOut)
        postToWorker(
            [stream = std::shared_ptr<CaptureStream>(std::move(m_stream))]() mutable { stream.reset(); });
}

Task<std::expected<void, PlatformError>> StreamSegment::start(CaptureStreamFactory *streams,
                                                              CaptureSource *source,
                                                              CaptureStreamConfiguration configuration,
                                                              std::stop_token stop) {
    configuration.outputFile = m_fileURL;
    CaptureStreamEvents events;
    events.firstFrame = [this, self = m_self, loop = EventLoop::current()](double hostTime) {
        {
            std::scoped_lock lock(m_anchorMutex);
            if (m_firstFrameHostTime)
                return;
            m_firstFrameHostTime = hostTime;
        }
        loop.post([self, hostTime] {
            if (*self && (*self)->onFirstFrame)
                (*self)->onFirstFrame(hostTime);
        });
    };
    if (onMicSample)
        events.microphoneSamples = onMicSample;
    events.stoppedWithError = [self = m_self, loop = EventLoop::current()](PlatformError error) {
        qCWarning(logCapture, "stream stopped externally: %s", error.message.c_str());
        loop.post([self, error = std::move(error)] {
            if (*self)
                (*self)->ended(error);
        });
    };
    events.recordingFinished = [result = m_result](RecordingSummary summary) { result.resolve(summary); };
    events.recordingFailed = [result = m_result](PlatformError error) {
        result.resolve(std::unexpected(Failure(std::move(error))));
    };
    m_stream = streams->makeStream(*source, std::move(configuration), std::move(events));
    const auto started = co_await m_stream->start(stop);
    if (!started)
        co_return std::unexpected(started.error());
    std::scoped_lock lock(m_anchorMutex);
    m_captureStartHostTime = m_clock.hostNow();
    co_return std::expected<void, PlatformError>();
}

void StreamSegment::ended(std::optional<PlatformError> error) {
    if (std::exchange(m_spontaneousEndNotified, true) || !onSpontaneousEnd)
        return;
    onSpontaneousEnd(std::move(error));
}

Task<std::expected<RecordingSummary, Failure>> StreamSegment::finish(std::stop_token stop) {
    m_scope.start(this, &StreamSegment::watch);
    m_stream->stop();
    auto result = co_await m_result.wait(stop);
    m_scope.cancel();
    if (!result)
        co_return std::unexpected(Failure(Cancelled{}));
    co_return std::move(*result);
}

Task<> StreamSegment::watch(std::stop_token stop) {
    if (!co_await m_clock.sleep(finishLimit, stop))
        co_return;
    if (!m_result.resolve(std::unexpected(Failure(RecordingError::finalizeTimedOut))))
        co_return;
    m_timedOut = true;
    qCCritical(logCapture, "segment finalize timed out");
}

double StreamSegment::anchorHostTime() const {
    std::scoped_lock lock(m_anchorMutex);
    return m_firstFrameHostTime.value_or(m_captureStartHostTime);
}

} // namespace vantrell
