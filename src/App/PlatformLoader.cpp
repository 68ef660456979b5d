// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/PlatformLoader.h"

#include "Platform/NullCaptureBackend.h"
#include "Platform/NullInputMonitor.h"
#include "Platform/X11/X11CaptureBackend.h"

#include <QtGlobal>

namespace vantrell {

namespace {

Platform nullPlatform(const PlatformError &reason) {
    return {
        std::make_unique<NullCaptureBackend>(reason.message), std::make_unique<NullInputMonitor>(reason), {}};
}

Platform x11Platform() {
    auto capture = X11CaptureBackend::create({});
    if (!capture)
        return nullPlatform(capture.error());
    Platform platform;
    platform.capture = std::move(*capture);
    platform.input = std::make_unique<NullInputMonitor>(
        PlatformError{"x11", 0, "input events are not observed on this display"});
    return platform;
}

} // namespace

Platform loadPlatform() {
    const QByteArray forced = qgetenv("VANTRELL_BACKEND");
    if (forced == "null")
        return nullPlatform({"session", 0, "There is no desktop to record"});
    // A Wayland session with XWayland has a DISPLAY too, but that one shows X11 windows only.
    if (forced != "x11" && qgetenv("XDG_SESSION_TYPE") == "wayland" &&
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullPlatform({"session", 0, "Recording Wayland sessions is not supported yet"});
    return x11Platform();
}

} // namespace vantrell
