// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/HttpClient.h"
#include "Support/OneShot.h"
#include "Support/UniqueFd.h"

#include <curl/curl.h>

#include <chrono>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

namespace vantrell {

class SocketTable;

/// One request on its way. Everything below `done` belongs to the network thread.
class HttpTransfer {
public:
    explicit HttpTransfer(HttpRequest request);
    ~HttpTransfer();
    HttpTransfer(const HttpTransfer &) = delete;
    HttpTransfer &operator=(const HttpTransfer &) = delete;

    const std::string &url() const { return m_request.url; }
    /// Before it is started: the proxy as libcurl takes it, empty for none. Otherwise the environment
    /// decides.
    void useProxy(std::string proxy) { m_proxy = std::move(proxy); }

    /// The result, whatever ended the transfer.
    const OneShot<HttpResult> &done() const { return m_done; }

    /// Opens the body's file and makes the handle.
    std::expected<void, TransportError> prepare(SocketTable &sockets,
                                                const std::optional<std::filesystem::path> &authorities);
    /// None before `prepare`.
    CURL *easy() const { return m_easy.get(); }
    /// The local port of its connection; 0 while it has none.
    int localPort() const { return m_localPort; }
    /// What the transfer came to when it ended with that code.
    HttpResult result(CURLcode code);

    /// Nothing has moved for longer than the request allows.
    bool isSilentTooLong(const SocketTable &sockets);
    /// How often `isSilentTooLong` has to be asked.
    std::chrono::milliseconds watchInterval() const;

private:
    using Instant = std::chrono::steady_clock::time_point;

    std::expected<void, TransportError> openBody();
    std::expected<void, TransportError> setHeaders();
    void setMethod();
    void setConnection(const std::optional<std::filesystem::path> &authorities);
    bool mayBeSentAgain() const;
    TransportError failure(TransportError::Kind kind, PlatformError platform, bool ambiguous) const;

    std::size_t readBody(char *target, std::size_t room);
    std::size_t takeHeader(std::string_view line);
    std::size_t takeBody(std::string_view bytes);

    static std::size_t onRead(char *target, std::size_t size, std::size_t count, void *self);
    static int onSeek(void *self, curl_off_t offset, int origin);
    static std::size_t onHeader(char *bytes, std::size_t size, std::size_t count, void *self);
    static std::size_t onBody(char *bytes, std::size_t size, std::size_t count, void *self);
    static int onBeforeRequest(void *self, char *primaryIp, char *localIp, int primaryPort, int localPort);

    struct EasyCleanup {
        void operator()(CURL *easy) const { curl_easy_cleanup(easy); }
    };
    struct ListCleanup {
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };

    HttpRequest m_request;
    std::optional<std::string> m_proxy;
    const OneShot<HttpResult> m_done;
    UniqueFd m_file;
    std::int64_t m_bodySize = 0;
    std::int64_t m_sent = 0;
    std::optional<PlatformError> m_fileError;
    int m_timesBegun = 0;
    bool m_refusedExpect = false;
    HttpResponse m_response;

    int m_localPort = 0;
    std::int64_t m_received = 0;
    /// What had moved when the silence was last looked at.
    std::int64_t m_seenMoved = -1;
    std::int64_t m_seenUnacknowledged = 0;
    Instant m_lastMove;

    std::unique_ptr<curl_slist, ListCleanup> m_headers;
    // After the list: the handle refers to it.
    std::unique_ptr<CURL, EasyCleanup> m_easy;
};

} // namespace vantrell
