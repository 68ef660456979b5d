// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/SessionKind.h"

#include <QtGlobal>

namespace vantrell {

SessionKind sessionKind() {
    const QByteArray forced = qgetenv("VANTRELL_BACKEND");
    if (forced == "null")
        return SessionKind::none;
    if (forced == "wayland")
        return SessionKind::wayland;
    // A Wayland session with XWayland has a DISPLAY too, but that one shows X11 windows only.
    const bool isWayland =
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        (qgetenv("XDG_SESSION_TYPE") == "wayland" || qEnvironmentVariableIsEmpty("DISPLAY"));
    if (forced != "x11" && isWayland)
        return SessionKind::wayland;
    return SessionKind::x11;
}

} // namespace vantrell
