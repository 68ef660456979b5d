// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/HttpHeaders.h"

#include <cstdint>
#include <string>

namespace vantrell {

/// The server's answer. A redirect is not followed: it arrives as its status.
struct HttpResponse {
    int status = 0;
    HttpHeaders headers;
    std::string body;
    /// The body was longer than the request allowed; `body` is empty then.
    bool bodyDropped = false;
    /// Bytes of the request's body that were handed to the transport.
    std::int64_t bodyBytesSent = 0;

    bool isSuccess() const { return status >= 200 && status <= 299; }

    /// A page for a person: what a captive portal or a proxy on the way answers in the server's place, often
    /// with status 200. The body tells; the Content-Type does not: gateways call any short answer text/html.
    bool isWebPage() const;
};

} // namespace vantrell
