// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace vantrell {

/// Why an address cannot be the service's.
enum class ServiceURLError {
    notAnAddress = 1,
    /// Plain http to another computer would show the key to everybody on the way.
    insecure,
    /// A user name, a query or a fragment.
    notABase,
};

/// The sentence for the user.
std::string description(ServiceURLError error);

/// Where the service is: https, or http on this computer only.
class ServiceURL {
public:
    static std::expected<ServiceURL, ServiceURLError> parse(const std::string &text);

    /// What VANTRELL_API_URL says, or else the address that was built in.
    static std::expected<ServiceURL, ServiceURLError> fromEnvironment();

    /// The base with `path` ("v1/capture/limits", without a leading slash) as further components.
    std::string appending(std::string_view path) const;

    /// Without a slash at the end.
    const std::string &text() const { return m_text; }

private:
    explicit ServiceURL(std::string text) : m_text(std::move(text)) {}

    std::string m_text;
};

} // namespace vantrell
