// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpTransfer.h"

#include "Http/SocketTable.h"
#include "Http/Url.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace vantrell {

namespace {

constexpr std::chrono::milliseconds longestConnect = std::chrono::seconds(30);
constexpr long uploadBufferBytes = 1024 * 1024;
/// What TLS 1.3 needs, the cheapest first: a capture is encrypted on somebody's battery.
constexpr const char *ciphers = "TLS_AES_128_GCM_SHA256:TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256";

bool holdsLineBreak(const std::string &text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos;
}

/// Ends after which the server may hold any part of the request's body.
bool isAmbiguous(CURLcode code) {
    switch (code) {
    case CURLE_PARTIAL_FILE:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_ABORTED_BY_CALLBACK:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_FAIL_REWIND:
        return true;
    default:
        return false;
    }
}

PlatformError curlError(CURL *easy, CURLcode code) {
    std::string message = curl_easy_strerror(code);
    long osError = 0;
    if (easy && curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &osError) == CURLE_OK && osError != 0)
        message += " (" + std::generic_category().message(int(osError)) + ")";
    return PlatformError{"curl", int(code), message};
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

} // namespace

HttpTransfer::HttpTransfer(HttpRequest request) : m_request(std::move(request)) {}

HttpTransfer::~HttpTransfer() = default;

std::expected<void, TransportError>
HttpTransfer::prepare(SocketTable &sockets, const std::optional<std::filesystem::path> &authorities) {
    if (const auto opened = openBody(); !opened)
        return opened;
    m_easy.reset(curl_easy_init());
    if (const auto set = setHeaders(); !set)
        return set;
    setMethod();
    setConnection(authorities);
    sockets.attach(m_easy.get());
    m_lastMove = std::chrono::steady_clock::now();
    return {};
}

std::expected<void, TransportError> HttpTransfer::openBody() {
    if (const auto *bytes = std::get_if<std::string>(&m_request.body))
        m_bodySize = std::int64_t(bytes->size());
    const auto *range = std::get_if<FileRange>(&m_request.body);
    if (!range)
        return {};
    m_bodySize = range->length;
    m_file.reset(::open(range->path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!m_file)
        return std::unexpected(
            failure(TransportError::Kind::file,
                    PlatformError::fromErrno("open " + range->path.filename().string(), errno), false));
    return {};
}

std::expected<void, TransportError> HttpTransfer::setHeaders() {
    const auto append = [this](const std::string &line) {
        // The list's first element stays the same once there is one.
        if (m_headers)
            curl_slist_append(m_headers.get(), line.c_str());
        else
            m_headers.reset(curl_slist_append(nullptr, line.c_str()));
    };
    for (const auto &[name, value] : m_request.headers.fields()) {
        if (holdsLineBreak(name) || holdsLineBreak(value))
            return std::unexpected(failure(
                TransportError::Kind::transport,
                PlatformError{"curl", CURLE_BAD_FUNCTION_ARGUMENT, "a header holds a line break"}, false));
        // libcurl takes "Name:" as an order to leave the header out.
        append(value.empty() ? name + ";" : name + ": " + value);
    }
    // A POST without a body would otherwise be called a form.
    if (!m_request.headers.find("Content-Type"))
        append("Content-Type:");
    if (!m_request.expectContinue)
        append("Expect:");
    curl_easy_setopt(m_easy.get(), CURLOPT_HTTPHEADER, m_headers.get());
    return {};
}

void HttpTransfer::setMethod() {
    CURL *const easy = m_easy.get();
    switch (m_request.method) {
    case HttpMethod::get:
        curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
        break;
    case HttpMethod::head:
        curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
        break;
    case HttpMethod::post:
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(m_bodySize));
        break;
    case HttpMethod::patch:
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, "PATCH");
        [[fallthrough]];
    case HttpMethod::put:
        curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(easy, CURLOPT_INFILESIZE_LARGE, curl_off_t(m_bodySize));
        break;
    }
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, &HttpTransfer::onRead);
    curl_easy_setopt(easy, CURLOPT_READDATA, this);
    curl_easy_setopt(easy, CURLOPT_SEEKFUNCTION, &HttpTransfer::onSeek);
    curl_easy_setopt(easy, CURLOPT_SEEKDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &HttpTransfer::onHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &HttpTransfer::onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &HttpTransfer::onBeforeRequest);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
}

void HttpTransfer::setConnection(const std::optional<std::filesystem::path> &authorities) {
    CURL *const easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_URL, m_request.url.c_str());
    // A signature may cover the path letter by letter.
    curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, uploadBufferBytes);
    curl_easy_setopt(easy, CURLOPT_TLS13_CIPHERS, ciphers);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                     long(std::min(m_request.silence, longestConnect).count()));
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // Removing a handle in the middle of a name look-up must not wait for the resolver.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    // Plain http is for this computer only; through a proxy it would leave it.
    if (isLoopbackUrl(m_request.url))
        curl_easy_setopt(easy, CURLOPT_PROXY, "");
    else if (m_proxy)
        curl_easy_setopt(easy, CURLOPT_PROXY, m_proxy->c_str());
    if (authorities)
        curl_easy_setopt(easy, CURLOPT_CAINFO, authorities->c_str());
    else if (const char *file = std::getenv("SSL_CERT_FILE"); file && *file)
        curl_easy_setopt(easy, CURLOPT_CAINFO, file);
}

bool HttpTransfer::mayBeSentAgain() const {
    if (m_request.method == HttpMethod::get || m_request.method == HttpMethod::head)
        return true;
    // The server did not understand the Expect header and wants the request without it.
    return m_refusedExpect && m_sent == 0;
}

TransportError HttpTransfer::failure(TransportError::Kind kind, PlatformError platform,
                                     bool ambiguous) const {
    return {kind, std::move(platform), m_sent, ambiguous};
}

HttpResult HttpTransfer::result(CURLcode code) {
    m_file.reset();
    if (m_fileError)
        return std::unexpected(failure(TransportError::Kind::file, *m_fileError, m_sent > 0));
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    m_response.status = int(status);
    m_response.bodyBytesSent = m_sent;
    if (code == CURLE_OK || (code == CURLE_WRITE_ERROR && m_response.bodyDropped))
        return std::move(m_response);
    const bool notHttp = code == CURLE_WEIRD_SERVER_REPLY || code == CURLE_UNSUPPORTED_PROTOCOL;
    return std::unexpected(
        failure(notHttp && m_timesBegun > 0 ? TransportError::Kind::notHttp : TransportError::Kind::transport,
                curlError(m_easy.get(), code), m_timesBegun > 0 && (notHttp || isAmbiguous(code))));
}

bool HttpTransfer::isSilentTooLong(const SocketTable &sockets) {
    const Instant now = std::chrono::steady_clock::now();
    // The kernel takes the last megabytes of a body long before they have left: what it still holds counts.
    const std::int64_t unacknowledged = sockets.unacknowledged(m_localPort);
    const std::int64_t moved = m_sent + m_received;
    if (moved != m_seenMoved || unacknowledged != m_seenUnacknowledged) {
        m_seenMoved = moved;
        m_seenUnacknowledged = unacknowledged;
        m_lastMove = now;
    }
    return now - m_lastMove >= m_request.silence;
}

std::chrono::milliseconds HttpTransfer::watchInterval() const {
    return std::clamp(m_request.silence / 8, std::chrono::milliseconds(10), std::chrono::milliseconds(1000));
}

std::size_t HttpTransfer::readBody(char *target, std::size_t room) {
    const std::size_t wanted = std::min(room, std::size_t(m_bodySize - m_sent));
    // Asked beyond the end only when a body that was sent is wanted once more.
    if (wanted == 0)
        return m_bodySize == 0 ? 0 : CURL_READFUNC_ABORT;
    if (const auto *bytes = std::get_if<std::string>(&m_request.body)) {
        std::memcpy(target, bytes->data() + m_sent, wanted);
        m_sent += std::int64_t(wanted);
        return wanted;
    }
    const FileRange &range = std::get<FileRange>(m_request.body);
    ssize_t count = 0;
    do
        count = ::pread(m_file.get(), target, wanted, range.offset + m_sent);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        m_fileError = PlatformError::fromErrno("read " + range.path.filename().string(), errno);
    else if (count == 0)
        m_fileError = PlatformError{"posix", ENODATA, "The file became shorter while it was uploaded"};
    if (count <= 0)
        return CURL_READFUNC_ABORT;
    m_sent += count;
    return std::size_t(count);
}

std::size_t HttpTransfer::takeHeader(std::string_view line) {
    m_received += std::int64_t(line.size());
    const std::string_view text = trimmed(line);
    if (text.starts_with("HTTP/")) {
        // Each answer begins anew: "100 Continue" and a proxy's own come before the real one.
        m_response.headers.clear();
        m_refusedExpect = text.find(" 417") != std::string_view::npos;
    } else if (const auto colon = text.find(':'); colon != std::string_view::npos) {
        m_response.headers.add(std::string(text.substr(0, colon)),
                               std::string(trimmed(text.substr(colon + 1))));
    }
    return line.size();
}

std::size_t HttpTransfer::takeBody(std::string_view bytes) {
    m_received += std::int64_t(bytes.size());
    if (std::int64_t(m_response.body.size() + bytes.size()) > m_request.maxAnswerBytes) {
        m_response.body.clear();
        m_response.bodyDropped = true;
        return 0;
    }
    m_response.body.append(bytes);
    return bytes.size();
}

std::size_t HttpTransfer::onRead(char *target, std::size_t size, std::size_t count, void *self) {
    return static_cast<HttpTransfer *>(self)->readBody(target, size * count);
}

int HttpTransfer::onSeek(void *, curl_off_t, int) {
    // libcurl rewinds to send a body once more by itself: never.
    return CURL_SEEKFUNC_FAIL;
}

std::size_t HttpTransfer::onHeader(char *bytes, std::size_t size, std::size_t count, void *self) {
    return static_cast<HttpTransfer *>(self)->takeHeader({bytes, size * count});
}

std::size_t HttpTransfer::onBody(char *bytes, std::size_t size, std::size_t count, void *self) {
    return static_cast<HttpTransfer *>(self)->takeBody({bytes, size * count});
}

int HttpTransfer::onBeforeRequest(void *self, char *, char *, int, int localPort) {
    auto *const transfer = static_cast<HttpTransfer *>(self);
    transfer->m_localPort = localPort;
    // The second time within one transfer: libcurl found its connection dead and wants to try another.
    if (++transfer->m_timesBegun > 1 && !transfer->mayBeSentAgain())
        return CURL_PREREQFUNC_ABORT;
    return CURL_PREREQFUNC_OK;
}

} // namespace vantrell
