// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Recording/Failure.h"

#include <optional>

namespace vantrell {

/// Why a stopped recording yields no capture.
struct RecordingStopFailure {
    Failure failure;
    /// What became of the last segment, if that is why nothing is left.
    std::optional<Failure> cause;
    /// Its journal and its movies are kept: RecordingRecovery makes the capture of them. False when nothing
    /// was recorded.
    bool isRecoverable = false;
};

/// The sentence for the user: the cause where there is one.
inline std::string description(const RecordingStopFailure &failure) {
    return description(failure.cause.value_or(failure.failure));
}

} // namespace vantrell
