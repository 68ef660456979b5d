// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/HttpHeaders.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>

namespace vantrell {

enum class HttpMethod { get = 1, head, post, patch, put };

/// Bytes of a file, streamed from disk while they are sent: they are never in memory as a whole.
struct FileRange {
    std::filesystem::path path;
    std::int64_t offset = 0;
    std::int64_t length = 0;
};

/// Nothing, bytes, or a part of a file.
using HttpBody = std::variant<std::monostate, std::string, FileRange>;

/// One exchange. Header values that hold a line break are refused, not sent.
struct HttpRequest {
    HttpMethod method = HttpMethod::get;
    /// Absolute, http or https.
    std::string url;
    HttpHeaders headers;
    HttpBody body;
    /// Longest silence: no byte leaves the machine and none comes in. A slow line that moves is not silent.
    /// Connecting, the TLS handshake included, has the same limit, at most 30 s.
    std::chrono::milliseconds silence = std::chrono::seconds(60);
    /// Ask the server before a large body is sent (one-shot uploads: a refusal then costs nothing).
    bool expectContinue = false;
    /// An answer's body that is longer is dropped (see HttpResponse::bodyDropped).
    std::int64_t maxAnswerBytes = 8 << 20;
};

} // namespace vantrell
