// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// How a command ends.
enum class ExitCode {
    success = 0,
    failed = 1,
    wrongUsage = 2,
    notConnected = 3,
    nothingRecorded = 4,
};

} // namespace vantrell
