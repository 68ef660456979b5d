// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Network/RequestLog.h"
#include "TestSupport/Network/ScriptedConnection.h"

#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vantrell::testing {

/// A server on a loopback port that behaves as badly as a test wants: each connection runs the script on a
/// thread of its own. What scripts share they guard themselves.
class ScriptedHttpServer {
public:
    using Script = std::function<void(ScriptedConnection &)>;

    explicit ScriptedHttpServer(Script script);
    ~ScriptedHttpServer();
    ScriptedHttpServer(const ScriptedHttpServer &) = delete;
    ScriptedHttpServer &operator=(const ScriptedHttpServer &) = delete;

    int port() const { return m_port; }
    /// "http://127.0.0.1:PORT" and the path.
    std::string url(const std::string &path = "/") const;
    int connectionCount() const;
    /// Connections whose script has ended.
    int endedCount() const;

private:
    void acceptAll();

    Script m_script;
    UniqueFd m_listener;
    int m_port = 0;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<ScriptedConnection>> m_connections;
    std::vector<std::thread> m_threads;
    int m_ended = 0;
    bool m_closing = false;
    std::thread m_acceptor;
};

/// A script that notes each whole request and lets `reply` answer it, until the peer closes.
ScriptedHttpServer::Script
answering(std::shared_ptr<RequestLog> log,
          std::function<void(ScriptedConnection &, const ReceivedRequest &)> reply);

} // namespace vantrell::testing
