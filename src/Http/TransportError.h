// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <cstdint>

namespace vantrell {

/// No answer came, or not all of it.
struct TransportError {
    enum class Kind {
        /// The line, the name, the connection, TLS, a time-out: what a retry may heal.
        transport = 1,
        /// Something answered, but not in HTTP.
        notHttp,
        /// The file behind the body could not be read, or ended early.
        file,
        /// The caller's stop was requested, or the client was destroyed: neither success nor failure.
        cancelled,
    };

    Kind kind = Kind::transport;
    /// Domain "curl" with a CURLcode, or "posix" for the file behind the body. Without addresses or secrets.
    PlatformError platform;
    /// Bytes of the request's body that were handed to the transport.
    std::int64_t bodyBytesSent = 0;
    /// The server may have acted on the request, wholly or in part: only it can tell.
    bool ambiguous = false;

    bool isCancelled() const { return kind == Kind::cancelled; }
    static TransportError cancelled();
};

} // namespace vantrell
