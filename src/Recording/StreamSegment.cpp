// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/StreamSegment.h"

#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"
#include "Support/Log.h"

#include <mutex>
#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds finishLimit(15);

} // namespace

/// What the stream's own threads reach. They may outlive the segment: then nothing more is passed on.
class StreamSegment::Tap {
public:
    void open(std::function<void(std::span<const float>)> samples) {
        std::scoped_lock lock(m_mutex);
        m_onMicSample = std::move(samples);
    }

    /// False for any but the first.
    bool takeFirstFrame(double hostTime) {
        std::scoped_lock lock(m_mutex);
        if (m_firstFrame)
            return false;
        m_firstFrame = hostTime;
        return true;
    }

    std::optional<double> firstFrame() const {
        std::scoped_lock lock(m_mutex);
        return m_firstFrame;
    }

    void takeSamples(std::span<const float> samples) const {
        std::scoped_lock lock(m_mutex);
        if (m_onMicSample)
            m_onMicSample(samples);
    }

    /// Waits for samples that are being passed on.
    void close() {
        std::scoped_lock lock(m_mutex);
        m_onMicSample = nullptr;
    }

private:
    mutable std::mutex m_mutex;
    std::optional<double> m_firstFrame;
    std::function<void(std::span<const float>)> m_onMicSample;
};

StreamSegment::StreamSegment(std::filesystem::path fileURL, Clock &clock)
    : m_fileURL(std::move(fileURL)), m_clock(clock), m_tap(std::make_shared<Tap>()),
      m_self(std::make_shared<StreamSegment *>(this)) {}

StreamSegment::~StreamSegment() {
    *m_self = nullptr;
    m_tap->close();
    // A stream whose threads are busy must not hang the interface too: they are joined elsewhere.
    if (m_isStreamLeftBehind)
        postToWorker(
            [stream = std::shared_ptr<CaptureStream>(std::move(m_stream))]() mutable { stream.reset(); });
}

Task<std::expected<void, Failure>> StreamSegment::start(CaptureStreamFactory *streams, CaptureSource *source,
                                                        CaptureStreamConfiguration configuration,
                                                        std::stop_token stop) {
    configuration.outputFile = m_fileURL;
    CaptureStreamEvents events;
    events.firstFrame = [tap = m_tap, self = m_self, loop = EventLoop::current()](double hostTime) {
        if (!tap->takeFirstFrame(hostTime))
            return;
        loop.post([self, hostTime] {
            if (*self && (*self)->onFirstFrame)
                (*self)->onFirstFrame(hostTime);
        });
    };
    if (onPointerMoved) {
        events.pointerMoved = [self = m_self, loop = EventLoop::current()](double hostTime, Point onPicture) {
            loop.post([self, hostTime, onPicture] {
                if (*self)
                    (*self)->onPointerMoved(hostTime, onPicture);
            });
        };
    }
    if (onMicSample) {
        m_tap->open(onMicSample);
        events.microphoneSamples = [tap = m_tap](std::span<const float> samples) {
            tap->takeSamples(samples);
        };
    }
    events.stoppedWithError = [self = m_self, loop = EventLoop::current()](PlatformError error) {
        qCCritical(logCapture, "stream stopped externally: %s", error.message.c_str());
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
    if (!started) {
        m_isStreamLeftBehind = std::holds_alternative<Cancelled>(started.error());
        co_return std::unexpected(asFailure(started.error()));
    }
    m_captureStartHostTime = m_clock.hostNow();
    co_return std::expected<void, Failure>();
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
    m_isStreamLeftBehind = true;
    qCCritical(logCapture, "segment finalize timed out");
}

double StreamSegment::anchorHostTime() const {
    return m_tap->firstFrame().value_or(m_captureStartHostTime);
}

bool StreamSegment::hasFrames() const {
    return m_tap->firstFrame().has_value();
}

} // namespace vantrell
