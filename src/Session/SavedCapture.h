// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Support/PlatformError.h"

#include <nlohmann/json_fwd.hpp>

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace vantrell {

/// A capture as files for its user: movie or picture, sidecar and thumbnail under one base name.
struct SavedCapture {
    std::filesystem::path file;
    std::optional<std::filesystem::path> sidecar;
    std::optional<std::filesystem::path> thumbnail;

    /// The JSON that describes it; `capture` and `isPartial` as the recording ended.
    nlohmann::json json(const CaptureResult &capture, bool isPartial) const;
};

/// Makes sure that the folder exists and can be written to; made with its parents when missing.
std::expected<void, PlatformError> prepareFolder(const std::filesystem::path &folder);

/// Moves the capture's file to `folder` (absent: leaves it where it is) and writes sidecar and thumbnail
/// beside it. `beforeMove` is told the file's new place before it is moved; in the folder the file is named
/// `name`, or as it was when that is empty. At any instant, a power cut's
/// too, the capture is whole in one of both places; when the move fails it stays where it was recorded, and
/// the error says where that is. Blocks on the disk.
std::expected<SavedCapture, PlatformError>
saveCapture(const CaptureResult &capture, const std::optional<std::filesystem::path> &folder,
            const std::function<void(const std::filesystem::path &)> &beforeMove = {},
            const std::string &name = {});

} // namespace vantrell
