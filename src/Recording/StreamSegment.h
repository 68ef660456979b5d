// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureStreamFactory.h"
#include "Recording/Failure.h"
#include "Support/Clock.h"
#include "Support/OneShot.h"
#include "Support/TaskScope.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace vantrell {

/// One stretch of a recording: one capture stream that writes one movie file. Main thread; the stream's
/// events arrive on threads of its own.
///
///     made --start--> recording --finish--> finished | failed
///
/// The result of finishing arrives once, from the stream or from the watchdog, whichever is first; when the
/// stream reports before anybody waits, the result is kept.
class StreamSegment {
public:
    /// The clock must outlive the segment.
    StreamSegment(std::filesystem::path fileURL, Clock &clock);
    ~StreamSegment();
    StreamSegment(const StreamSegment &) = delete;
    StreamSegment &operator=(const StreamSegment &) = delete;

    const std::filesystem::path &fileURL() const { return m_fileURL; }

    /// The stream stopped by itself; the error that it gave, if any. Main thread, at most once.
    std::function<void(std::optional<PlatformError>)> onSpontaneousEnd;

    /// Host time of the first frame. Main thread, once. Set before the start.
    std::function<void(double)> onFirstFrame;

    /// Where the pointer is on the source's picture, in parts of its size. Main thread. Set before the start.
    std::function<void(double hostTime, Point onPicture)> onPointerMoved;

    /// Interleaved microphone samples, on the stream's thread; not called once the segment is gone. Set
    /// before the start.
    std::function<void(std::span<const float>)> onMicSample;

    /// Begins to capture into the segment's file. Cancelled or failed, it leaves no file. What is pointed to
    /// outlives the segment.
    Task<std::expected<void, Failure>> start(CaptureStreamFactory *streams, CaptureSource *source,
                                             CaptureStreamConfiguration configuration, std::stop_token stop);

    /// The picture's size. After the start.
    PixelSize pictureSize() const { return m_stream->pictureSize(); }

    /// Stops the stream and waits until its file is whole, at most 15 seconds.
    Task<std::expected<RecordingSummary, Failure>> finish(std::stop_token stop);

    /// Host time of the first frame or, when none came, of the capture's start.
    double anchorHostTime() const;

    /// A picture came: there is something to keep.
    bool hasFrames() const;

private:
    using Result = std::expected<RecordingSummary, Failure>;
    class Tap;

    Task<> watch(std::stop_token stop);
    void ended(std::optional<PlatformError> error);

    const std::filesystem::path m_fileURL;
    Clock &m_clock;
    const std::shared_ptr<Tap> m_tap;
    double m_captureStartHostTime = 0;
    OneShot<Result> m_result;
    /// The stream's threads may be busy for long, with a file that hangs or a start that nobody waits for.
    bool m_isStreamLeftBehind = false;
    bool m_spontaneousEndNotified = false;
    std::shared_ptr<StreamSegment *> m_self;
    std::unique_ptr<CaptureStream> m_stream;
    TaskScope m_scope;
};

} // namespace vantrell
