// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureError.h"
#include "Recording/RecordingError.h"
#include "Support/Cancelled.h"
#include "Support/PlatformError.h"

#include <string>
#include <utility>
#include <variant>

namespace vantrell {

/// Whatever can go wrong while something is recorded; Cancelled is among the alternatives but is no failure
/// to show or to log.
using Failure = std::variant<PlatformError, CaptureError, RecordingError, Cancelled>;

/// A narrower choice of the same.
template <typename... Errors>
Failure asFailure(std::variant<Errors...> error) {
    return std::visit([](auto &&one) { return Failure(std::move(one)); }, std::move(error));
}

/// The sentence for the user; empty for Cancelled.
std::string description(const Failure &failure);

} // namespace vantrell
