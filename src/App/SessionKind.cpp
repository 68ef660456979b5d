// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/SessionKind.h"

#include <QtGlobal>

namespace vantrell {

SessionKind sessionKind() {
    const QByteArray forced = qgetenv("VANTRELL_BACKEND");
    if (forced == "null")
        return SessionKind::none;
    // A Wayland session with XWayland has a DISPLAY too, but that one shows X11 windows only.
    if (forced != "x11" && qgetenv("XDG_SESSION_TYPE") == "wayland" &&
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return SessionKind::wayland;
    return SessionKind::x11;
}

} // namespace vantrell
