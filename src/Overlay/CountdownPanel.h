// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Support/Clock.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Counts down from `seconds` to 1 in the middle of the display, one number a second. True when it came to
/// its end, or Enter ended it early; false when Escape, a click or the stop cancelled it. When it returns
/// nothing of it is on the screen any more. The keyboard stays with the application that has it: Escape and
/// Enter are taken by grabs for as long as it counts. Main thread; the clock outlives it.
Task<bool> countDown(int seconds, Display display, Clock &clock, std::stop_token stop);

} // namespace vantrell
