// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <string>

namespace vantrell {

/// The parts of an absolute http or https address.
struct Url {
    /// Lower case.
    std::string scheme;
    /// Numeric addresses in their plain form, IPv6 in brackets.
    std::string host;
    std::string path;
    bool hasUser = false;

    /// This computer: "localhost", 127.0.0.0/8 or ::1.
    bool isLoopback() const;

    /// None unless the text is an absolute http or https address with a host.
    static std::optional<Url> parse(const std::string &text);
};

/// The host of the address is this computer.
bool isLoopbackUrl(const std::string &text);

/// `reference` as seen from the address `base`; an absolute reference is returned as it is. None when that is
/// no http or https address.
std::optional<std::string> resolveUrl(const std::string &base, const std::string &reference);

} // namespace vantrell
