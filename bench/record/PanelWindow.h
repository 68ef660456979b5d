// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell::bench {

/// Shows a panel of the application as far as recording is concerned, with a level that moves fifteen times a
/// second, until the end of standard input; it is there when `log`.ready is. A process of its own.
int showPanel(const std::filesystem::path &log);

} // namespace vantrell::bench
