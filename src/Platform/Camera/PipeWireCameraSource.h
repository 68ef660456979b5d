// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/CameraClock.h"
#include "Platform/Camera/CameraMode.h"
#include "Platform/Camera/CameraPicture.h"
#include "Platform/Camera/PipeWireCameraRegistry.h"
#include "Platform/Camera/PipeWireRemote.h"
#include "Platform/CameraError.h"
#include "Platform/CameraSource.h"
#include "Platform/PipeWire/PipeWireVideoStream.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// A camera of a PipeWire server, with a thread of its own.
///
///   no server <-> no camera <-> asking for its modes -> waiting for a picture -> running
///
/// The first camera that ran is the one: when it goes away, no other takes its place, and when it comes back
/// its pictures go on.
class PipeWireCameraSource final : public CameraSource {
public:
    PipeWireCameraSource(PipeWireRemote remote, std::optional<std::string> id);
    ~PipeWireCameraSource() override;

    void start(CameraSourceHandlers handlers) override;
    Camera camera() const override;

private:
    using Found = PipeWireCameraRegistry::Found;

    void connect();
    void disconnect();
    void camerasChanged();
    std::optional<Found> wantedCamera() const;
    void askForModes(const Found &found);
    void openStream();
    void closeStream();
    void formatChanged(const spa_pod &format);
    void streamStateChanged(pw_stream_state state, const char *error);
    void takePictures();
    bool fill(const PipeWireBuffer &buffer, CameraFrame &frame) const;
    void startAgain(CameraErrorCode why);
    void report(CameraSourceState state, std::optional<PlatformError> error = std::nullopt);

    const PipeWireRemote m_remote;
    const std::optional<std::string> m_wantedId;
    CameraSourceHandlers m_handlers;
    PipeWireLoop m_loop;
    // From here on the loop's thread's, in the order in which they depend on each other.
    std::optional<PipeWireTimer> m_again;
    std::optional<PipeWireTimer> m_silent;
    std::unique_ptr<PipeWireConnection> m_connection;
    std::optional<PipeWireCameraRegistry> m_registry;
    std::optional<Found> m_current;
    PipeWireProxyPtr<pw_node> m_node;
    PipeWireListener m_nodeListener;
    std::vector<CameraMode> m_modes;
    std::optional<PipeWireVideoStream> m_stream;
    std::optional<CameraMode> m_mode;
    CameraClock m_clock;
    bool m_hasRun = false;
    std::optional<CameraSourceState> m_reported;
    CameraErrorCode m_why = CameraErrorCode::noCameraServer;

    mutable std::mutex m_mutex;
    Camera m_camera;
};

} // namespace vantrell
