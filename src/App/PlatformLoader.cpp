// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/PlatformLoader.h"

#include "Media/Encoding/EncoderChoice.h"
#include "Media/Sound/SoundRecorder.h"
#include "Platform/Audio/PulseAudioBackend.h"
#include "Platform/NullCaptureBackend.h"
#include "Platform/NullInputMonitor.h"
#include "Platform/NullStillCapture.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Platform/X11/X11InputMonitor.h"
#include "Platform/X11/X11StillCapture.h"

#include <QtGlobal>

namespace vantrell {

namespace {

Platform nullPlatform(const PlatformError &reason) {
    return {std::make_unique<PulseAudioBackend>(),
            std::make_unique<NullCaptureBackend>(reason.message),
            std::make_unique<NullInputMonitor>(reason),
            std::make_unique<NullStillCapture>(reason),
            {}};
}

Platform x11Platform(Clock &clock) {
    Platform platform;
    platform.audio = std::make_unique<PulseAudioBackend>();
    auto capture = X11CaptureBackend::create(SoundRecorder::factory(*platform.audio),
                                             encoderPreference(qgetenv("VANTRELL_ENCODER").toStdString()));
    if (!capture)
        return nullPlatform(capture.error());
    platform.windowBounds = [backend = capture->get()](std::uint32_t id) {
        return backend->windowBounds(id);
    };
    platform.capture = std::move(*capture);
    platform.input = std::make_unique<X11InputMonitor>(clock);
    platform.stills = std::make_unique<X11StillCapture>();
    return platform;
}

} // namespace

Platform loadPlatform(Clock &clock) {
    const QByteArray forced = qgetenv("VANTRELL_BACKEND");
    if (forced == "null")
        return nullPlatform({"session", 0, "There is no desktop to record"});
    // A Wayland session with XWayland has a DISPLAY too, but that one shows X11 windows only.
    if (forced != "x11" && qgetenv("XDG_SESSION_TYPE") == "wayland" &&
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullPlatform({"session", 0, "Recording Wayland sessions is not supported yet"});
    return x11Platform(clock);
}

} // namespace vantrell
