// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Camera/CameraPictureReader.h"
#include "Media/Camera/CameraPreview.h"
#include "Media/Camera/CameraRecording.h"
#include "Platform/CameraSession.h"
#include "Platform/CameraSource.h"
#include "Support/OneShot.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vantrell {

/// A camera session made of stages that all backends share; only where the pictures come from differs.
///
/// The source's thread unpacks each picture and writes it as NV12, once: straight into the room that the
/// file's encoder has for it, or, when nothing is recorded, into a picture of its own, from which the preview
/// is cut. Each file has threads of its own (CameraRecording). The main thread never waits for more than one
/// picture to be written.
class StagedCameraSession final : public CameraSession {
public:
    StagedCameraSession(std::unique_ptr<CameraSource> source, std::shared_ptr<EncoderChoice> encoders);
    ~StagedCameraSession() override;

    Task<std::expected<void, StreamStartFailure>> open(std::stop_token stop) override;
    const Camera &camera() const override { return m_camera; }
    void startRecording(std::filesystem::path file, CaptureStreamEvents events) override;
    void stopRecording() override;
    void showPreview(int squarePixels, std::function<void()> changed) override;
    QImage preview() override;

private:
    using Opened = OneShot<std::expected<void, PlatformError>>;

    enum class Use { none, lookedAt, kept };
    Use useOf(const CameraFrame &frame);
    void take(const CameraFrame &frame);
    void takeForPreview(const CameraFrame &frame);
    void stateChanged(CameraSourceState state, const std::optional<PlatformError> &error);
    void copyLast(Nv12Frame &to);

    const std::shared_ptr<EncoderChoice> m_encoders;
    const std::shared_ptr<CameraPreview> m_preview = std::make_shared<CameraPreview>();
    const Opened m_opened;
    Camera m_camera;

    // The source's thread's.
    CameraPictureReader m_reader;
    double m_keptAt = 0;
    std::unique_ptr<Nv12Frame> m_lookedAt;

    std::mutex m_mutex;
    // Under the mutex.
    /// The newest picture in the size of the first one, which is that of all files.
    std::unique_ptr<Nv12Frame> m_last;
    ColourMatrix m_matrix = ColourMatrix::bt601;
    PictureContent m_content = PictureContent::camera;
    std::shared_ptr<CameraRecording> m_recording;

    /// The main thread's: files that are being finished.
    std::vector<std::shared_ptr<CameraRecording>> m_ending;
    std::unique_ptr<CameraSource> m_source;
};

} // namespace vantrell
