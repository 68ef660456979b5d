// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Network/ScriptedConnection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <sstream>

namespace vantrell::testing {

std::string ReceivedRequest::header(const std::string &name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

std::int64_t ReceivedRequest::contentLength() const {
    const std::string text = header("content-length");
    return text.empty() ? 0 : std::stoll(text);
}

ScriptedConnection::ScriptedConnection(UniqueFd socket, int number)
    : m_socket(std::move(socket)), m_number(number) {}

bool ScriptedConnection::fill() {
    char buffer[65536];
    const ssize_t count = ::recv(m_socket.get(), buffer, sizeof buffer, 0);
    if (count <= 0)
        return false;
    m_pending.append(buffer, std::size_t(count));
    return true;
}

std::optional<ReceivedRequest> ScriptedConnection::receiveHead() {
    std::size_t end = 0;
    while ((end = m_pending.find("\r\n\r\n")) == std::string::npos)
        if (!fill())
            return std::nullopt;
    std::istringstream lines(m_pending.substr(0, end + 2));
    m_pending.erase(0, end + 4);

    ReceivedRequest request;
    request.connection = m_number;
    std::string line;
    std::getline(lines, line);
    std::istringstream(line) >> request.method >> request.target;
    while (std::getline(lines, line)) {
        const auto colon = line.find(':');
        if (colon == std::string::npos)
            continue;
        std::string name = line.substr(0, colon);
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        const auto first = line.find_first_not_of(' ', colon + 1);
        const auto last = line.find_last_not_of("\r ");
        request.headers[name] = first > last ? std::string() : line.substr(first, last - first + 1);
    }
    return request;
}

std::optional<ReceivedRequest> ScriptedConnection::receive() {
    auto request = receiveHead();
    if (!request)
        return std::nullopt;
    if (!request->header("expect").empty())
        send("HTTP/1.1 100 Continue\r\n\r\n");
    request->body = receiveBody(request->contentLength());
    if (std::int64_t(request->body.size()) < request->contentLength())
        return std::nullopt;
    return request;
}

std::string ScriptedConnection::receiveBody(std::int64_t bytes) {
    while (std::int64_t(m_pending.size()) < bytes && fill())
        continue;
    std::string body = m_pending.substr(0, std::size_t(bytes));
    m_pending.erase(0, body.size());
    return body;
}

void ScriptedConnection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            return;
        bytes.remove_prefix(std::size_t(count));
    }
}

void ScriptedConnection::answer(int status, const std::string &headers, const std::string &body) {
    send("HTTP/1.1 " + std::to_string(status) + " Scripted\r\n" + headers +
         (status == 204 ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n") + "\r\n" + body);
}

void ScriptedConnection::reset() {
    const linger abruptly{1, 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_LINGER, &abruptly, sizeof abruptly);
    std::scoped_lock lock(m_closing);
    m_socket.reset();
}

void ScriptedConnection::waitForClose() {
    // Reads nothing, so that the peer's send buffer fills up as well.
    pollfd closing{m_socket.get(), POLLRDHUP, 0};
    while (::poll(&closing, 1, -1) < 0 && errno == EINTR)
        continue;
}

void ScriptedConnection::shutDown() {
    std::scoped_lock lock(m_closing);
    ::shutdown(m_socket.get(), SHUT_RDWR);
}

} // namespace vantrell::testing
