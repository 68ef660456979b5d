// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/StoragePut.h"

#include "API/FileStamp.h"
#include "Http/Url.h"

namespace vantrell {

namespace {

/// From here on it pays to hear a refusal before the body is sent.
constexpr std::int64_t expectFromBytes = 1 << 20;

} // namespace

Task<std::expected<void, TransferError>> StoragePut::putFile(std::filesystem::path file, std::string url,
                                                             std::string mime, std::stop_token stop) const {
    const auto before = FileStamp::of(file);
    if (!before)
        co_return std::unexpected(before.error());
    const auto sent =
        co_await put(FileRange{file, 0, before->size}, before->size, std::move(url), std::move(mime), stop);
    if (sent && FileStamp::of(file) != before)
        co_return std::unexpected(ContentMismatch{});
    co_return sent;
}

Task<std::expected<void, TransferError>> StoragePut::putData(std::string bytes, std::string url,
                                                             std::string mime, std::stop_token stop) const {
    const auto size = std::int64_t(bytes.size());
    return put(std::move(bytes), size, std::move(url), std::move(mime), std::move(stop));
}

Task<std::expected<void, TransferError>> StoragePut::put(HttpBody body, std::int64_t size, std::string url,
                                                         std::string mime, std::stop_token stop) const {
    if (!Url::parse(url))
        co_return std::unexpected(APIError(APIError::MalformedResponse{}));
    HttpRequest request;
    request.method = HttpMethod::put;
    request.url = std::move(url);
    request.headers = {{"Content-Type", mime}, {"Cache-Control", "max-age=31536000"}};
    request.body = std::move(body);
    request.silence = std::chrono::seconds(60);
    request.expectContinue = size >= expectFromBytes;
    const auto response = co_await m_http.send(std::move(request), stop);
    if (!response)
        co_return std::unexpected(transferErrorOf(response.error()));
    if (!response->isSuccess())
        co_return std::unexpected(APIError::http(response->status, "Storage rejected the upload"));
    if (response->isWebPage())
        co_return std::unexpected(APIError(APIError::MalformedResponse{}));
    co_return std::expected<void, TransferError>();
}

} // namespace vantrell
