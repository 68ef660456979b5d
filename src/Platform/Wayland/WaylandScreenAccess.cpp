// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandScreenAccess.h"

#include "Support/Sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace vantrell {

namespace {

/// The socket of the server that carries the pictures, where libpipewire looks for it.
bool isPipeWireThere() {
    const char *remote = std::getenv("PIPEWIRE_REMOTE");
    std::filesystem::path socket = remote ? remote : "pipewire-0";
    if (socket.is_relative()) {
        const char *folder = std::getenv("PIPEWIRE_RUNTIME_DIR");
        if (!folder)
            folder = std::getenv("XDG_RUNTIME_DIR");
        if (!folder)
            return false;
        socket = std::filesystem::path(folder) / socket;
    }
    std::error_code error;
    // In a sandbox the portal alone reaches it.
    return std::filesystem::exists(socket, error) || isSandboxed();
}

} // namespace

WaylandScreenAccess::WaylandScreenAccess(QDBusConnection bus, std::string systemName)
    : m_systemName(std::move(systemName)), m_portal(std::move(bus)) {
    request();
}

bool WaylandScreenAccess::isGranted() const {
    return !m_isPortalMissing && isPipeWireThere();
}

void WaylandScreenAccess::request() {
    m_scope.cancel();
    m_scope.start(this, &WaylandScreenAccess::look);
}

Task<> WaylandScreenAccess::look(std::stop_token stop) {
    const auto offered = co_await m_portal.properties(QStringLiteral("ScreenCast"), stop);
    if (stop.stop_requested())
        co_return;
    // One that hangs is there: what is asked of it says so.
    const auto *const error = offered ? nullptr : std::get_if<PlatformError>(&offered.error());
    m_isPortalMissing = error && isPortalError(*error, PortalErrorCode::missing);
}

std::string WaylandScreenAccess::whatToDo() const {
    if (m_isPortalMissing)
        return "The desktop's part that shares the screen is missing. Install xdg-desktop-portal and the "
               "portal of this desktop (xdg-desktop-portal-kde, -gnome or -wlr), then log in again.";
    if (!isPipeWireThere())
        return "PipeWire, which carries the screen's pictures, is not running. Install pipewire and "
               "wireplumber, then log in again.";
    return {};
}

} // namespace vantrell
