// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantrell {

/// What the service is told about a capture before its upload.
struct CaptureRegistration {
    std::string projectId;
    /// "video" or "image".
    std::string kind;
    std::string mime;
    /// Size of the main file.
    std::int64_t bytes = 0;
    /// Recordings only.
    std::optional<std::int64_t> durationMs;
    std::optional<std::string> name;
    /// Size of the thumbnail (a JPEG); none when there is no thumbnail.
    std::optional<std::int64_t> thumbBytes;
    /// A metadata sidecar follows.
    bool hasMeta = false;
    /// The journal entry's UUID in lower case: the same id always means the same capture.
    std::string captureId;

    std::string toJson() const;
};

} // namespace vantrell
