// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/TransportError.h"
#include "Support/PlatformError.h"

#include <optional>
#include <string>
#include <variant>

namespace vantrell {

/// A failure of a call to the service or of a transfer to storage.
class APIError {
public:
    /// The server answered with a status outside 200..299; the message is the one in its answer.
    struct Http {
        int status = 0;
        std::optional<std::string> message;
        bool operator==(const Http &) const = default;
    };
    /// No answer came: no connection, a time-out, TLS, a cancelled task.
    struct Network {
        PlatformError underlying;
        bool operator==(const Network &) const = default;
    };
    /// The service has this capture already, under that id.
    struct AlreadyUploaded {
        std::string assetId;
        bool operator==(const AlreadyUploaded &) const = default;
    };
    /// There is no API key, or the service declared it invalid or revoked.
    struct NotPaired {
        bool operator==(const NotPaired &) const = default;
    };
    /// The answer was not HTTP, or a 2xx body could not be decoded.
    struct MalformedResponse {
        bool operator==(const MalformedResponse &) const = default;
    };
    using Value = std::variant<Http, Network, AlreadyUploaded, NotPaired, MalformedResponse>;

    APIError(Value value) : m_value(std::move(value)) {}
    static APIError http(int status, std::optional<std::string> message = std::nullopt) {
        return APIError(Http{status, std::move(message)});
    }
    static APIError of(const TransportError &error);

    /// The case's data, or null when it is another case.
    template <typename Case>
    const Case *as() const {
        return std::get_if<Case>(&m_value);
    }
    const Value &value() const { return m_value; }

    /// The sentence for the user.
    std::string description() const;
    /// For the log: the sentence, and behind it what the platform said.
    std::string logText() const;

    bool operator==(const APIError &) const = default;

private:
    Value m_value;
};

} // namespace vantrell
