// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// A failure of the platform that is passed on unchanged.
struct PlatformError {
    /// Whose code it is: "posix", "curl", "ffmpeg", "x11", "secret-service", ...
    std::string domain;
    int code = 0;
    /// The platform's own text; never holds a secret or a signed address.
    std::string message;

    /// The sentence for the user.
    const std::string &description() const { return message; }

    /// From errno; `what` says what was tried, for example "open". A full disk is told in a sentence of its
    /// own, whatever was tried.
    static PlatformError fromErrno(const std::string &what, int errorNumber);

    bool operator==(const PlatformError &) const = default;
};

/// True for a failure whose cause is that the disk (or the user's quota) is full.
bool isDiskFull(const PlatformError &error);

} // namespace vantrell
