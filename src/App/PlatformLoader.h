// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Platform.h"
#include "Support/Clock.h"

namespace vantrell {

/// Picks the backends by the session's type; the environment variable VANTRELL_BACKEND ("x11" or "null")
/// forces them, VANTRELL_ENCODER ("software" or "hardware") the kind of video encoder. The only place that
/// knows backends by name. The clock must outlive what is made. Main thread.
Platform loadPlatform(Clock &clock);

} // namespace vantrell
