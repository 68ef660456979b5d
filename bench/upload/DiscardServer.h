// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "ByteStream.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vantrell::bench {

/// Takes uploads, by tus or by PUT, and drops the bytes: the shortest way from socket to answer, so that the
/// sender is what is measured.
class DiscardServer {
public:
    /// With a folder that holds "authority.pem" and "key.pem" it speaks TLS.
    explicit DiscardServer(const std::optional<std::filesystem::path> &certificate);
    ~DiscardServer();
    DiscardServer(const DiscardServer &) = delete;
    DiscardServer &operator=(const DiscardServer &) = delete;

    int port() const { return m_port; }
    /// Connections since the last call.
    int takeConnectionCount() { return m_connections.exchange(0); }
    /// Bytes that the newest resumable upload holds.
    std::int64_t newestOffset();

private:
    struct Head {
        std::string method;
        std::string target;
        std::map<std::string, std::string> fields;
        std::int64_t number(const std::string &name) const;
    };

    void acceptAll();
    void serve(UniqueFd socket);
    static std::optional<Head> readHead(ByteStream &stream, std::string &pending);
    static std::int64_t drop(ByteStream &stream, std::string &pending, std::int64_t bytes,
                             std::string &buffer);
    std::string answer(const Head &head, std::int64_t received);

    struct Cleanup {
        void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
    };
    std::unique_ptr<SSL_CTX, Cleanup> m_context;
    UniqueFd m_listener;
    int m_port = 0;
    std::atomic<int> m_connections = 0;
    std::mutex m_mutex;
    std::vector<std::int64_t> m_offsets;
    std::vector<std::thread> m_threads;
    std::thread m_acceptor;
};

} // namespace vantrell::bench
