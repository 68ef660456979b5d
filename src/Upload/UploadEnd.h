// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/FileStamp.h"
#include "Upload/UploadIds.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace vantrell {

/// How one upload ended, for whoever waits for it.
struct UploadEnd {
    UploadIds ids;
    std::filesystem::path file;
    std::string projectId;
    /// The service's id of the capture, or the sentence that its card shows. After a sentence the upload is
    /// either parked in the journal (`isParked`) or, its file gone, dropped.
    std::expected<std::string, std::string> assetId;
    bool isParked = false;
    /// What the file was when it was sent.
    std::optional<FileStamp> stamp;
};

} // namespace vantrell
