// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/APIError.h"

namespace vantrell {

namespace {

struct Describe {
    std::string operator()(const APIError::Http &error) const {
        return error.message ? *error.message : "Request failed (" + std::to_string(error.status) + ")";
    }
    std::string operator()(const APIError::Network &) const { return "Network error"; }
    std::string operator()(const APIError::AlreadyUploaded &) const { return "Capture already uploaded"; }
    std::string operator()(const APIError::NotPaired &) const { return "Not connected to Vantrell"; }
    std::string operator()(const APIError::MalformedResponse &) const { return "Unexpected server response"; }
};

} // namespace

APIError APIError::of(const TransportError &error) {
    if (error.kind == TransportError::Kind::notHttp)
        return APIError(MalformedResponse{});
    return APIError(Network{error.platform});
}

std::string APIError::description() const {
    return std::visit(Describe{}, m_value);
}

std::string APIError::logText() const {
    if (const auto *network = as<Network>())
        return description() + ": " + network->underlying.message;
    if (const auto *http = as<Http>(); http && http->message)
        return description() + " (" + std::to_string(http->status) + ")";
    return description();
}

} // namespace vantrell
