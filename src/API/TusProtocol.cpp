// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/TusProtocol.h"

#include "Http/Url.h"

#include <QByteArray>

#include <charconv>

namespace vantrell {

namespace {

std::optional<std::int64_t> parseNumber(std::string_view text) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

std::optional<std::int64_t> numberHeader(const HttpResponse &response, const char *name) {
    const auto text = response.headers.find(name);
    return text ? parseNumber(*text) : std::nullopt;
}

std::string metadataPair(const std::string &key, const std::string &value) {
    return key + " " + QByteArray::fromStdString(value).toBase64().toStdString();
}

} // namespace

TusProtocol::TusProtocol(HttpClient &http, TusUpload target) : m_http(http), m_target(std::move(target)) {}

HttpRequest TusProtocol::request(HttpMethod method, const std::string &url,
                                 std::chrono::seconds silence) const {
    HttpRequest made;
    made.method = method;
    made.url = url;
    made.headers = {
        {"Tus-Resumable", "1.0.0"}, {"x-signature", m_target.signature}, {"apikey", m_target.apiKey}};
    made.silence = silence;
    return made;
}

Task<std::expected<std::string, TransferError>> TusProtocol::createUpload(std::int64_t totalBytes,
                                                                          std::stop_token stop) const {
    HttpRequest create = request(HttpMethod::post, m_target.endpoint, std::chrono::seconds(60));
    create.headers.add("Upload-Length", std::to_string(totalBytes));
    create.headers.add("Upload-Metadata", metadataPair("bucketName", m_target.bucket) + "," +
                                              metadataPair("objectName", m_target.objectName) + "," +
                                              metadataPair("contentType", m_target.contentType) + "," +
                                              metadataPair("cacheControl", "31536000"));
    const auto response = co_await m_http.send(std::move(create), stop);
    if (!response)
        co_return std::unexpected(transferErrorOf(response.error()));
    const auto location = response->headers.find("Location");
    if (!response->isSuccess() || !location)
        co_return std::unexpected(APIError::http(response->status, "TUS create failed"));
    const auto absolute = resolveUrl(m_target.endpoint, *location);
    if (!absolute)
        co_return std::unexpected(APIError(APIError::MalformedResponse{}));
    co_return *absolute;
}

Task<std::optional<TusProtocol::State>> TusProtocol::probeOffset(std::string location,
                                                                 std::stop_token stop) const {
    const auto response =
        co_await m_http.send(request(HttpMethod::head, location, std::chrono::seconds(30)), stop);
    if (!response || !response->isSuccess())
        co_return std::nullopt;
    const auto offset = numberHeader(*response, "Upload-Offset");
    if (!offset)
        co_return std::nullopt;
    co_return State{*offset, numberHeader(*response, "Upload-Length")};
}

Task<std::expected<std::int64_t, TransferError>> TusProtocol::patchChunk(std::string location,
                                                                         std::int64_t offset, FileRange chunk,
                                                                         std::stop_token stop) const {
    HttpRequest patch = request(HttpMethod::patch, location, std::chrono::seconds(120));
    patch.headers.add("Upload-Offset", std::to_string(offset));
    patch.headers.add("Content-Type", "application/offset+octet-stream");
    patch.body = std::move(chunk);
    const auto response = co_await m_http.send(std::move(patch), stop);
    if (!response)
        co_return std::unexpected(transferErrorOf(response.error()));
    const auto answered = numberHeader(*response, "Upload-Offset");
    if (!response->isSuccess() || !answered)
        co_return std::unexpected(APIError::http(response->status, "TUS patch failed"));
    co_return *answered;
}

Task<std::expected<std::int64_t, TransferError>>
TusProtocol::currentOffset(std::string location, std::int64_t fallback, std::stop_token stop) const {
    const auto response =
        co_await m_http.send(request(HttpMethod::head, location, std::chrono::seconds(60)), stop);
    if (!response)
        co_return std::unexpected(transferErrorOf(response.error()));
    co_return numberHeader(*response, "Upload-Offset").value_or(fallback);
}

} // namespace vantrell
