// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <filesystem>
#include <string>

namespace vantrell::bench {

/// Shows a scene on DISPLAY: waits for a byte on standard input, plays so many seconds, and writes "number
/// time" lines (host time when the server had drawn the frame) into `log`. The scene's background stays until
/// the end of standard input. A process of its own, so that the recorders are measured without it.
int paintScene(const std::string &scene, double seconds, const std::filesystem::path &log);

} // namespace vantrell::bench
