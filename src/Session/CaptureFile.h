// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"

#include <expected>
#include <filesystem>
#include <string>

namespace vantrell {

/// A file as a capture, with the side files that lie beside it under the same base name: thumbnail ".jpg" and
/// sidecar ".json". Without a sidecar the metadata has no type. The error is a sentence: no such file, not a
/// movie or a picture. Blocks on the disk.
std::expected<CaptureResult, std::string> readCaptureFile(const std::filesystem::path &file);

} // namespace vantrell
