// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Network/ScriptedHttpServer.h"

#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>

namespace vantrell::testing {

ScriptedHttpServer::ScriptedHttpServer(Script script)
    : m_script(std::move(script)), m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(m_listener.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(m_listener.get(), 64) != 0)
        throw std::runtime_error("no port to listen on");
    socklen_t size = sizeof address;
    ::getsockname(m_listener.get(), reinterpret_cast<sockaddr *>(&address), &size);
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptAll(); });
}

ScriptedHttpServer::~ScriptedHttpServer() {
    {
        std::scoped_lock lock(m_mutex);
        m_closing = true;
        for (const auto &connection : m_connections)
            connection->shutDown();
    }
    ::shutdown(m_listener.get(), SHUT_RDWR);
    m_acceptor.join();
    for (std::thread &thread : m_threads)
        thread.join();
}

std::string ScriptedHttpServer::url(const std::string &path) const {
    return "http://127.0.0.1:" + std::to_string(m_port) + path;
}

int ScriptedHttpServer::connectionCount() const {
    std::scoped_lock lock(m_mutex);
    return int(m_connections.size());
}

int ScriptedHttpServer::endedCount() const {
    std::scoped_lock lock(m_mutex);
    return m_ended;
}

void ScriptedHttpServer::acceptAll() {
    for (;;) {
        UniqueFd socket(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        std::scoped_lock lock(m_mutex);
        if (!socket || m_closing)
            return;
        const auto connection =
            std::make_shared<ScriptedConnection>(std::move(socket), int(m_connections.size()) + 1);
        m_connections.push_back(connection);
        m_threads.emplace_back([this, connection] {
            m_script(*connection);
            connection->shutDown();
            std::scoped_lock ended(m_mutex);
            ++m_ended;
        });
    }
}

ScriptedHttpServer::Script
answering(std::shared_ptr<RequestLog> log,
          std::function<void(ScriptedConnection &, const ReceivedRequest &)> reply) {
    return [log = std::move(log), reply = std::move(reply)](ScriptedConnection &connection) {
        while (const auto request = connection.receive()) {
            log->note(*request);
            reply(connection, *request);
        }
    };
}

} // namespace vantrell::testing
