// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/KeyFrameSchedule.h"
#include "Media/Encoding/VideoEncoder.h"
#include "Media/Movie/MovieSink.h"
#include "Media/Stream/FrameExchange.h"
#include "Support/PlatformError.h"
#include "Support/WorkerThread.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace vantrell {

/// Encodes what the capture thread hands over and gives it to the movie's writer, on a thread of its own.
/// Made and used by the capture thread.
class EncodeStage {
public:
    struct Result {
        std::int64_t frames = 0;
        std::int64_t lastPresentationTime = 0;
        /// Why it ended early.
        std::optional<PlatformError> error;
        /// It was the encoder and not the disk.
        bool encoderBroke = false;
    };

    /// Exchange and movie outlive the stage. `failed` is called once on the encode thread when encoder or
    /// disk fail; what comes after is dropped. `epoch` is the host time that is the movie's zero; when it is
    /// not known yet, `setEpoch` follows.
    EncodeStage(FrameExchange &exchange, std::unique_ptr<VideoEncoder> encoder, MovieSink &movie,
                TrackId track, std::function<void()> failed, double epoch = 0);
    ~EncodeStage();
    EncodeStage(const EncodeStage &) = delete;
    EncodeStage &operator=(const EncodeStage &) = delete;

    /// Before the first frame is submitted.
    void setEpoch(double hostTime) { m_epoch = hostTime; }

    /// Closes the exchange, encodes what waits, and holds the last picture until `endTime` (movie ticks).
    Result finish(std::int64_t endTime);

    /// Movie ticks of a host time.
    std::int64_t ticks(double hostTime) const;

private:
    void run();
    /// What comes, or what came last once more when it is worth being refined.
    std::optional<FrameExchange::Job> next();
    bool refine(const FrameExchange::Job &job, std::int64_t presentationTime);
    bool write(const EncodedFrame &frame, double hostTime, std::int64_t movieTime);
    bool encode(const FrameExchange::Job &job, std::int64_t presentationTime);
    void hold(std::int64_t endTime);
    void fail(PlatformError error);

    FrameExchange &m_exchange;
    std::unique_ptr<VideoEncoder> m_encoder;
    MovieSink &m_movie;
    TrackId m_track;
    std::function<void()> m_failed;
    double m_epoch;
    KeyFrameSchedule m_keyFrames;
    std::optional<FrameExchange::Job> m_last;
    /// What the encoder was told, which rises also where the movie's times stay behind.
    std::int64_t m_lastEncoderTime = 0;
    Result m_result;
    WorkerThread m_thread;
};

} // namespace vantrell
