// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/WaylandServer.h"

#include "Support/UniqueFd.h"

#include <QtGlobal>

#include <cstring>
#include <filesystem>
#include <fstream>

#include <sys/socket.h>
#include <sys/un.h>

namespace vantrell {

std::optional<std::string> waylandCompositor() {
    // An absolute name stands for itself.
    const std::string path = std::filesystem::path(qgetenv("XDG_RUNTIME_DIR").toStdString()) /
                             qgetenv("WAYLAND_DISPLAY").toStdString();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return std::nullopt;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return std::nullopt;
    ucred server{};
    socklen_t size = sizeof server;
    std::string name;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &server, &size) == 0)
        std::getline(std::ifstream("/proc/" + std::to_string(server.pid) + "/comm"), name);
    return name;
}

} // namespace vantrell
