// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/Url.h"

#include <curl/curl.h>

#include <arpa/inet.h>

#include <memory>

namespace vantrell {

namespace {

struct HandleCleanup {
    void operator()(CURLU *handle) const { curl_url_cleanup(handle); }
};
using Handle = std::unique_ptr<CURLU, HandleCleanup>;

std::string part(CURLU *handle, CURLUPart which) {
    char *text = nullptr;
    if (curl_url_get(handle, which, &text, 0) != CURLUE_OK)
        return {};
    std::string result(text);
    curl_free(text);
    return result;
}

std::optional<Url> partsOf(CURLU *handle) {
    Url url{part(handle, CURLUPART_SCHEME), part(handle, CURLUPART_HOST), part(handle, CURLUPART_PATH),
            !part(handle, CURLUPART_USER).empty() || !part(handle, CURLUPART_PASSWORD).empty()};
    if ((url.scheme != "http" && url.scheme != "https") || url.host.empty())
        return std::nullopt;
    return url;
}

} // namespace

bool Url::isLoopback() const {
    if (host == "localhost" || host == "[::1]")
        return true;
    in_addr address{};
    return ::inet_pton(AF_INET, host.c_str(), &address) == 1 && (ntohl(address.s_addr) >> 24) == 127;
}

std::optional<Url> Url::parse(const std::string &text) {
    const Handle handle(curl_url());
    if (curl_url_set(handle.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK)
        return std::nullopt;
    return partsOf(handle.get());
}

bool isLoopbackUrl(const std::string &text) {
    const auto url = Url::parse(text);
    return url && url->isLoopback();
}

std::optional<std::string> resolveUrl(const std::string &base, const std::string &reference) {
    if (Url::parse(reference))
        return reference;
    const Handle handle(curl_url());
    if (curl_url_set(handle.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK ||
        curl_url_set(handle.get(), CURLUPART_URL, reference.c_str(), 0) != CURLUE_OK ||
        !partsOf(handle.get()))
        return std::nullopt;
    return part(handle.get(), CURLUPART_URL);
}

} // namespace vantrell
