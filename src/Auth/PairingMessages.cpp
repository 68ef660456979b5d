// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/PairingMessages.h"

#include "Http/Url.h"

#include <algorithm>

namespace vantrell {

namespace {

constexpr char systemName[] = "Linux";

bool isUsableAddress(const std::string &text) {
    const auto url = Url::parse(text);
    return url && !url->hasUser && (url->scheme == "https" || url->isLoopback());
}

/// Visible ASCII: anything else would break the header that carries the key.
bool isUsableKey(const std::string &key) {
    return !key.empty() && std::ranges::all_of(key, [](char c) { return c > ' ' && c < 0x7f; });
}

} // namespace

std::string deviceName() {
    return std::string("Vantrell Capture (") + systemName + ")";
}

std::expected<PairingRequestResponse, JsonError> PairingRequestResponse::decode(const std::string &body) {
    const auto json = parseJson(body);
    if (!json)
        return std::unexpected(json.error());
    JsonReader reader(*json);
    const PairingRequestResponse response{reader.string("deviceCode"), reader.string("approvalUrl"),
                                          reader.integer("pollIntervalSeconds"),
                                          reader.integer("expiresInSeconds")};
    if (!reader.error() && !isUsableAddress(response.approvalUrl))
        reader.fail("approvalUrl", "is no https address");
    if (reader.error())
        return std::unexpected(*reader.error());
    return response;
}

std::expected<PairingPollResponse, JsonError> PairingPollResponse::decode(const std::string &body) {
    const auto json = parseJson(body);
    if (!json)
        return std::unexpected(json.error());
    JsonReader reader(*json);
    PairingPollResponse response{reader.string("status"), reader.optionalString("apiKey")};
    if (response.apiKey && !isUsableKey(*response.apiKey))
        response.apiKey.reset();
    if (reader.error())
        return std::unexpected(*reader.error());
    return response;
}

} // namespace vantrell
