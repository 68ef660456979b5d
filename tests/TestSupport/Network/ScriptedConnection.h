// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace vantrell::testing {

/// A request as it came over the wire. Header names are in lower case.
struct ReceivedRequest {
    std::string method;
    std::string target;
    std::map<std::string, std::string> headers;
    std::string body;
    /// Which of the server's connections it came on, from 1.
    int connection = 0;

    std::string header(const std::string &name) const;
    std::int64_t contentLength() const;
};

/// The server's end of one connection: reads requests and answers with any bytes at all. Blocks; lives on a
/// thread of the server.
class ScriptedConnection {
public:
    ScriptedConnection(UniqueFd socket, int number);

    /// A whole request ("100 Continue" is sent when asked for); none when the peer has closed.
    std::optional<ReceivedRequest> receive();
    /// Only the head; the body stays unread.
    std::optional<ReceivedRequest> receiveHead();
    /// Up to that many more bytes of the body.
    std::string receiveBody(std::int64_t bytes);

    /// The bytes as they are.
    void send(std::string_view bytes);
    /// A complete answer with a Content-Length. `headers` are whole lines, each with its line end.
    void answer(int status, const std::string &headers = {}, const std::string &body = {});
    /// Ends the connection with a reset, as a crashed peer does.
    void reset();
    /// Says and reads nothing until the peer closes.
    void waitForClose();
    /// Ends whatever blocks on the connection. Thread-safe.
    void shutDown();

private:
    bool fill();

    UniqueFd m_socket;
    /// The server may shut down what the connection's own thread is closing.
    std::mutex m_closing;
    int m_number;
    std::string m_pending;
};

} // namespace vantrell::testing
