// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderChoice.h"
#include "Media/Movie/MovieWriter.h"
#include "Media/Stream/EncodeStage.h"
#include "Media/Stream/FrameExchange.h"
#include "Platform/CaptureStream.h"
#include "Support/WorkerThread.h"

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vantrell {

/// One movie file of a camera. A thread of its own opens and finishes it and tells all its events; another
/// one encodes (EncodeStage). Pictures that find the encoder busy with all before them are dropped.
class CameraRecording {
public:
    struct Kind {
        PixelSize size;
        ColourMatrix matrix = ColourMatrix::bt601;
        PictureContent content = PictureContent::camera;
    };
    /// Paints the picture that the camera showed last; any thread.
    using LastPicture = std::function<void(Nv12Frame &to)>;

    /// Of every picture from the host time `from` on; `lastPicture` serves where none comes.
    CameraRecording(std::filesystem::path file, CaptureStreamEvents events, Kind kind, double from,
                    std::shared_ptr<EncoderChoice> encoders, LastPicture lastPicture);
    /// Ends it and waits until the file is closed.
    ~CameraRecording();
    CameraRecording(const CameraRecording &) = delete;
    CameraRecording &operator=(const CameraRecording &) = delete;

    /// Camera's thread: room for a picture of that host time; null when it is not wanted or there is none.
    Nv12Frame *roomFor(double hostTime);
    /// Camera's thread: the room that was given last is filled.
    void filled();

    /// Any thread. The last picture is held up to `hostTime`.
    void end(double hostTime);
    /// Any thread: the camera has gone.
    void lost(PlatformError error, double hostTime);
    /// The last event was told.
    bool isOver() const;

private:
    void run();
    std::expected<std::unique_ptr<VideoEncoder>, PlatformError> open();
    void waitForFirstPicture();
    void waitForEnd();
    void finish();
    void submit(FrameExchange::Slot *slot, double hostTime);

    const std::filesystem::path m_file;
    const CaptureStreamEvents m_events;
    const Kind m_kind;
    const double m_from;
    const std::shared_ptr<EncoderChoice> m_encoders;
    const LastPicture m_lastPicture;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under the mutex.
    FrameExchange m_exchange;
    double m_epoch = 0;
    std::optional<double> m_end;
    std::optional<PlatformError> m_lost;
    bool m_encodeFailed = false;
    bool m_isOver = false;
    std::int64_t m_dropped = 0;
    FrameExchange::Slot *m_room = nullptr;
    double m_roomTime = 0;

    // The recording's own thread's.
    std::unique_ptr<MovieWriter> m_writer;
    std::unique_ptr<EncodeStage> m_encode;
    TrackId m_track;

    WorkerThread m_thread;
};

} // namespace vantrell
