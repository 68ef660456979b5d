// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/APIError.h"
#include "App/CommandContext.h"
#include "App/ServiceSession.h"
#include "Support/Task.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// A capture on disk that is to be uploaded.
struct CaptureUpload {
    std::filesystem::path file;
    /// "video" or "image".
    std::string kind;
    std::string mime;
    std::optional<std::string> name;
    std::optional<std::int64_t> durationMs;
    std::optional<std::filesystem::path> thumbnail;
    std::optional<std::filesystem::path> sidecar;

    /// What a file is by its name, with the side files that lie beside it. The error is a sentence: no such
    /// file, not a movie or a picture. Blocks on the disk.
    static std::expected<CaptureUpload, std::string> ofFile(const std::filesystem::path &file);
};

/// Registers the capture, sends it with its side files and confirms it. The result is the asset's id, the
/// error a sentence for the user. Side files that cannot be sent do not keep the capture from being
/// confirmed.
Task<std::expected<std::string, std::string>> uploadCapture(CaptureUpload upload, std::string projectId,
                                                            ServiceSession *session, CommandContext context,
                                                            std::stop_token stop);

} // namespace vantrell
