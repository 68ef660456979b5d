// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>

namespace vantrell {

/// How long a segment's movie lasts, in milliseconds; a movie that was cut off is made whole first. 0 when
/// there is none, or nothing in it. The error is worth another try: a full disk, or (EWOULDBLOCK, "The
/// recording is still being saved") somebody still writing. Blocks on the disk.
std::expected<double, PlatformError> durationOfMovie(const std::filesystem::path &movie);

} // namespace vantrell
