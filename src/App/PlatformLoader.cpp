// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/PlatformLoader.h"

#include "App/SessionKind.h"
#include "Media/Camera/StagedCameraSessionFactory.h"
#include "Media/Sound/SoundRecorder.h"
#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/Audio/PulseAudioBackend.h"
#include "Platform/Camera/DesktopCameraBackend.h"
#include "Platform/NullCaptureBackend.h"
#include "Platform/NullInputMonitor.h"
#include "Platform/NullStillCapture.h"
#include "Platform/Wayland/WaylandCaptureBackend.h"
#include "Platform/Wayland/WaylandDisplays.h"
#include "Platform/Wayland/WaylandInputMonitor.h"
#include "Platform/Wayland/WaylandStillCapture.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Platform/X11/X11InputMonitor.h"
#include "Platform/X11/X11StillCapture.h"

#include <QDBusConnection>

namespace vantrell {

namespace {

/// What every desktop has: sound, cameras, and the making of movies.
Platform commonPlatform() {
    Platform platform;
    platform.audio = std::make_unique<PulseAudioBackend>();
    const EncoderPreference encoder = encoderPreference(qgetenv("VANTRELL_ENCODER").toStdString());
    platform.streams =
        std::make_unique<StagedStreamFactory>(SoundRecorder::factory(*platform.audio), encoder);
    platform.cameras = DesktopCameraBackend::create();
    platform.cameraSessions = std::make_unique<StagedCameraSessionFactory>(*platform.cameras, encoder);
    return platform;
}

Platform nullPlatform(const PlatformError &reason) {
    Platform platform = commonPlatform();
    platform.capture = std::make_unique<NullCaptureBackend>(reason.message);
    platform.input = std::make_unique<NullInputMonitor>(reason);
    platform.stills = std::make_unique<NullStillCapture>(reason);
    return platform;
}

Platform waylandPlatform() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    Platform platform = commonPlatform();
    auto capture = std::make_unique<WaylandCaptureBackend>(bus, listWaylandDisplays);
    platform.stills = std::make_unique<WaylandStillCapture>(*capture);
    platform.capture = std::move(capture);
    platform.input = std::make_unique<WaylandInputMonitor>();
    return platform;
}

Platform x11Platform(Clock &clock) {
    auto capture = X11CaptureBackend::create();
    if (!capture)
        return nullPlatform(capture.error());
    Platform platform = commonPlatform();
    platform.capture = std::move(*capture);
    platform.input = std::make_unique<X11InputMonitor>(clock);
    platform.stills = std::make_unique<X11StillCapture>();
    return platform;
}

} // namespace

Platform loadPlatform(Clock &clock) {
    switch (sessionKind()) {
    case SessionKind::none:
        return nullPlatform({"session", 0, "There is no desktop to record"});
    case SessionKind::wayland:
        return waylandPlatform();
    case SessionKind::x11:
        break;
    }
    return x11Platform(clock);
}

} // namespace vantrell
