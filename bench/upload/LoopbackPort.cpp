// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "LoopbackPort.h"

#include <stdexcept>

#include <sys/socket.h>

namespace vantrell::bench {

UniqueFd makeTcpSocket() {
    return UniqueFd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

sockaddr_in loopbackAddress(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(std::uint16_t(port));
    return address;
}

int bindToFreePort(int socket) {
    sockaddr_in address = loopbackAddress(0);
    socklen_t size = sizeof address;
    if (::bind(socket, reinterpret_cast<sockaddr *>(&address), size) != 0 ||
        ::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        throw std::runtime_error("no free port");
    return ntohs(address.sin_port);
}

} // namespace vantrell::bench
