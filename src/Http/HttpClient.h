// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/HttpRequest.h"
#include "Http/HttpResponse.h"
#include "Http/TransportError.h"
#include "Support/Task.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>

namespace vantrell {

class HttpEngine;

using HttpResult = std::expected<HttpResponse, TransportError>;

/// The process's one HTTP client: every request shares its connections.
///
/// - HTTP/1.1, kept-alive. TLS is verified against the system's trust store (SSL_CERT_FILE names another).
/// - Proxies come from the environment, or else from the desktop's settings; this computer is never reached
///   through one.
/// - Redirects are not followed, so no header of a request ever reaches another origin.
/// - A request that may have reached the server is never sent again behind the caller's back; only GET and
///   HEAD are repeated when a kept-alive connection turns out to be dead.
///
/// Sockets, TLS and the files behind bodies are handled on a thread of its own; the thread that calls is
/// never kept waiting. Thread-safe; the task resumes on the caller's thread, which needs an event loop.
class HttpClient {
public:
    struct Options {
        /// Certificate authorities instead of the system's trust store.
        std::optional<std::filesystem::path> authorities;
    };

    HttpClient() : HttpClient(Options{}) {}
    explicit HttpClient(Options options);
    /// Ends what still runs with TransportError::Kind::cancelled.
    ~HttpClient();
    HttpClient(const HttpClient &) = delete;
    HttpClient &operator=(const HttpClient &) = delete;

    /// Performs one exchange. A stop request ends the wait at once and closes the connection.
    Task<HttpResult> send(HttpRequest request, std::stop_token stop);

private:
    std::shared_ptr<HttpEngine> m_engine;
};

} // namespace vantrell
