// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureMetadata.h"

#include <QImage>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vantrell {

/// Ends the name of a recording that was recovered after a crash.
inline constexpr std::string_view recoveredSuffix = " (recovered)";

/// A finished capture, as every capture path hands it to the shelf and to the upload pipeline.
struct CaptureResult {
    /// What the service takes it for: a still, or anything that moves.
    enum class Kind { image = 1, video };

    Kind kind = Kind::video;
    /// "image/png" or "video/quicktime".
    std::string mime;
    std::filesystem::path fileURL;
    /// What the user sees it named.
    std::string name;
    CaptureMetadata metadata;
    /// For the shelf; null when there is none.
    QImage previewImage;
    std::optional<std::string> thumbnailJPEG;
    /// Absent for stills.
    std::optional<std::int64_t> durationMs;
};

/// "image" or "video".
constexpr std::string_view spelling(CaptureResult::Kind kind) {
    return kind == CaptureResult::Kind::image ? "image" : "video";
}

} // namespace vantrell
