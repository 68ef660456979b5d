// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <QImage>

#include <expected>
#include <filesystem>

namespace vantrell {

/// The movie's first picture, scaled down to fit 1024 x 1024 pixels with its aspect kept. Blocks: decodes.
std::expected<QImage, PlatformError> decodePosterFrame(const std::filesystem::path &path);

} // namespace vantrell
