// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell {

/// Starts the program anew, free of this process, and then asks this one to quit. False when it cannot be
/// started; this process then stays. Main thread.
bool relaunch(const std::filesystem::path &program);

} // namespace vantrell
