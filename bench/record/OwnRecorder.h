// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <filesystem>

namespace vantrell::bench {

/// Records the whole of DISPLAY into `movie` until SIGINT; the program that is measured as "ours".
int recordOwn(const std::filesystem::path &movie, PixelSize screen, bool showsCursor);

} // namespace vantrell::bench
