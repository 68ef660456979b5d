// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell {

/// From now on a crash of the process (a broken memory access, an abort) leaves a file "crash-<seconds since
/// 1970>-<process>.txt" in `folder`, which is made then: the signal, the thread's stack as modules and
/// offsets, and the last log lines. Afterwards the signal does what it would have done. Nothing is sent
/// anywhere. `heading` is its first line, one that names the build. Once, early in main.
void installCrashHandler(const std::filesystem::path &folder, const char *heading);

} // namespace vantrell
