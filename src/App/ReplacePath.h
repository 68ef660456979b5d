// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>

namespace vantrell {

/// Puts `fresh` (a file or a folder, whole on the disk) where `place` is on the same disk, and removes what
/// lay there. There is something at `place` all the time where the file system can exchange two names. On
/// failure `place` is what it was. Blocks on the disk; thread-safe.
std::expected<void, PlatformError> replacePath(const std::filesystem::path &fresh,
                                               const std::filesystem::path &place);

} // namespace vantrell
