// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// How a recording fails on its own account.
enum class RecordingError {
    /// The stream ended and did not say why.
    streamEnded = 1,
    /// A segment's file was not finished in time.
    finalizeTimedOut,
    lowDiskSpace,
};

/// The sentence for the user.
std::string description(RecordingError error);

} // namespace vantrell
