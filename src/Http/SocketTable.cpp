// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/SocketTable.h"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantrell {

namespace {

int localPortOf(int socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        return 0;
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6 &>(address).sin6_port);
    return address.ss_family == AF_INET ? ntohs(reinterpret_cast<const sockaddr_in &>(address).sin_port) : 0;
}

} // namespace

void SocketTable::attach(CURL *easy) {
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &SocketTable::open);
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &SocketTable::close);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
}

std::optional<curl_socket_t> SocketTable::find(int localPort) const {
    for (const curl_socket_t socket : m_sockets)
        if (localPort != 0 && localPortOf(socket) == localPort)
            return socket;
    return std::nullopt;
}

std::int64_t SocketTable::unacknowledged(int localPort) const {
    int bytes = 0;
    const auto socket = find(localPort);
    return socket && ::ioctl(*socket, SIOCOUTQ, &bytes) == 0 ? bytes : 0;
}

void SocketTable::resetOnClose(int localPort) const {
    const linger abruptly{1, 0};
    if (const auto socket = find(localPort))
        ::setsockopt(*socket, SOL_SOCKET, SO_LINGER, &abruptly, sizeof abruptly);
}

curl_socket_t SocketTable::open(void *self, curlsocktype, curl_sockaddr *address) {
    const int socket = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    if (socket < 0)
        return CURL_SOCKET_BAD;
    // Kept short: what a transfer counts as sent is then soon on its way, and its source is read on in time
    // instead of in bursts. It does not bound what is in flight.
    const int unsentBytes = 512 * 1024;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NOTSENT_LOWAT, &unsentBytes, sizeof unsentBytes);
    static_cast<SocketTable *>(self)->m_sockets.insert(socket);
    return socket;
}

int SocketTable::close(void *self, curl_socket_t socket) {
    static_cast<SocketTable *>(self)->m_sockets.erase(socket);
    return ::close(socket);
}

} // namespace vantrell
