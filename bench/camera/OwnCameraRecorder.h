// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell::bench {

/// Records the default camera into `movie` until SIGINT, and shows it in a square of `previewPixels`; the
/// program that is measured as "ours". Without a movie it only shows.
int recordOwnCamera(const std::filesystem::path &movie, int previewPixels);

} // namespace vantrell::bench
