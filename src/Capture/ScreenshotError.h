// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureError.h"
#include "Support/Cancelled.h"
#include "Support/PlatformError.h"

#include <variant>

namespace vantrell {

/// What can go wrong while a still is taken; Cancelled is among the alternatives but is no failure to show or
/// to log.
using ScreenshotError = std::variant<PlatformError, CaptureError, Cancelled>;

} // namespace vantrell
