// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/JsonReader.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace vantrell {

/// What this device calls itself on the approval page.
std::string deviceName();

/// The answer to the request for a device code.
struct PairingRequestResponse {
    std::string deviceCode;
    /// https, or http on this computer.
    std::string approvalUrl;
    std::int64_t pollIntervalSeconds = 0;
    std::int64_t expiresInSeconds = 0;

    /// Refuses an address that no browser should be sent to.
    static std::expected<PairingRequestResponse, JsonError> decode(const std::string &body);
};

/// The answer to a poll.
struct PairingPollResponse {
    std::string status;
    /// Never empty, and fit for a header.
    std::optional<std::string> apiKey;

    static std::expected<PairingPollResponse, JsonError> decode(const std::string &body);
};

} // namespace vantrell
