// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <optional>
#include <set>

namespace vantrell {

/// The sockets that the connection pool has open. Network thread.
class SocketTable {
public:
    /// Makes the transfers of `easy` open and close their sockets here. The table must outlive the pool.
    void attach(CURL *easy);

    /// Bytes that the kernel has taken but the peer has not acknowledged, on the connection with this local
    /// port; 0 when there is none.
    std::int64_t unacknowledged(int localPort) const;

    /// Makes the coming close of that connection a reset, which also drops what the kernel still holds.
    void resetOnClose(int localPort) const;

private:
    std::optional<curl_socket_t> find(int localPort) const;
    static curl_socket_t open(void *self, curlsocktype purpose, curl_sockaddr *address);
    static int close(void *self, curl_socket_t socket);

    std::set<curl_socket_t> m_sockets;
};

} // namespace vantrell
