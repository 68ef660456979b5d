// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/ServiceURL.h"

#include "Http/Url.h"

#include <cstdlib>

namespace vantrell {

std::string description(ServiceURLError error) {
    switch (error) {
    case ServiceURLError::notAnAddress:
        return "The service's address is not a web address";
    case ServiceURLError::insecure:
        return "The service's address must begin with https (http is for this computer only)";
    case ServiceURLError::notABase:
        return "The service's address must not hold a user name, a question mark or a hash sign";
    }
    return {};
}

std::expected<ServiceURL, ServiceURLError> ServiceURL::parse(const std::string &text) {
    const auto url = Url::parse(text);
    if (!url)
        return std::unexpected(ServiceURLError::notAnAddress);
    if (url->scheme != "https" && !url->isLoopback())
        return std::unexpected(ServiceURLError::insecure);
    if (url->hasUser || text.find_first_of("?#") != std::string::npos)
        return std::unexpected(ServiceURLError::notABase);
    return ServiceURL(text.substr(0, text.find_last_not_of('/') + 1));
}

std::expected<ServiceURL, ServiceURLError> ServiceURL::fromEnvironment() {
    const char *text = std::getenv("VANTRELL_API_URL");
    return parse(text && *text ? text : VANTRELL_DEFAULT_API_URL);
}

std::string ServiceURL::appending(std::string_view path) const {
    return m_text + "/" + std::string(path);
}

} // namespace vantrell
