// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderChoice.h"
#include "Media/Movie/MovieWriter.h"
#include "Media/Picture/PatchConverter.h"
#include "Media/Sound/SoundStage.h"
#include "Media/Stream/FittingStage.h"
#include "Media/Stream/FrameExchange.h"
#include "Media/Stream/FrameRateLimiter.h"
#include "Platform/CaptureStream.h"
#include "Platform/CaptureStreamConfiguration.h"
#include "Platform/FrameSource.h"
#include "Support/OneShot.h"
#include "Support/WorkerThread.h"

#include <atomic>
#include <memory>
#include <optional>
#include <span>

namespace vantrell {

class EncodeStage;

/// A capture stream made of stages that all backends share; only where the pixels come from differs.
///
/// - The capture thread sleeps in the frame source, fetches and converts what changed, at most so many frames
/// a
///   second, and at the end closes the movie. All events but the microphone's come from it.
/// - The encode thread (EncodeStage) encodes and hands to the writer.
/// - The writer's own thread writes to the disk. Sound has its own threads (SoundStage).
///
/// What is full makes the stage before it wait, down to the capture, where changes that find no room become
/// one: such frames count as dropped, and the time of the others stays right.
class StagedCaptureStream final : public CaptureStream {
public:
    StagedCaptureStream(CaptureStreamConfiguration configuration, CaptureStreamEvents events,
                        std::unique_ptr<FrameSource> source, std::shared_ptr<EncoderChoice> encoders,
                        SoundStageFactory makeSound);
    ~StagedCaptureStream() override;

    Task<std::expected<void, StreamStartFailure>> start(std::stop_token stop) override;
    void stop() override;
    PixelSize pictureSize() const override { return m_picture; }

private:
    using Started = OneShot<std::expected<void, PlatformError>>;

    void run(const Started &started);
    std::expected<void, PlatformError> open();
    /// Until the stop or an error, which it returns.
    std::expected<void, PlatformError> captureUntilStop();
    std::expected<void, PlatformError> captureFrame();
    void takeOver(std::span<const FramePatch> patches, FrameExchange::Slot &slot, BlockMap &changed) const;
    void begin(double hostTime);
    void finish();
    /// Nothing of the stretch is wanted: ends the stages and leaves no file.
    void discard();

    const CaptureStreamConfiguration m_configuration;
    const CaptureStreamEvents m_events;
    const std::unique_ptr<FrameSource> m_source;
    const std::shared_ptr<EncoderChoice> m_encoders;
    const SoundStageFactory m_makeSound;
    std::atomic<bool> m_isStopping = false;
    /// Nobody waited for the start until its end: set before the stop.
    std::atomic<bool> m_isCancelled = false;
    /// Host time of the stop; 0 before.
    std::atomic<double> m_stopTime = 0;
    std::atomic<bool> m_encoderFailed = false;
    /// Host time of the movie's zero; 0 before the first frame.
    std::atomic<double> m_epoch = 0;

    /// Set by the capture thread before the start is done.
    PixelSize m_picture;

    // The capture thread's.
    std::optional<FittingStage> m_fitting;
    PatchConverter m_converter;
    FrameRateLimiter m_limiter;
    std::unique_ptr<FrameExchange> m_exchange;
    std::unique_ptr<MovieWriter> m_writer;
    std::unique_ptr<EncodeStage> m_encode;
    std::unique_ptr<SoundStage> m_sound;
    TrackId m_videoTrack;
    /// A fetch that showed no change is not repeated at once.
    double m_notBefore = 0;
    std::int64_t m_droppedFrames = 0;

    WorkerThread m_thread;
};

} // namespace vantrell
