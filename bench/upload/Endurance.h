// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <filesystem>

namespace vantrell::bench {

/// Sends a file to the reference tus server while killing the sender at random moments, then once in one go.
/// Checks that the bytes arrived whole and that nothing beyond one chunk per cut was sent twice. Returns the
/// exit code.
int runEndurance(std::int64_t bytes, int cuts, const std::filesystem::path &folder);

} // namespace vantrell::bench
