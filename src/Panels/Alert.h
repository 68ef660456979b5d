// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Task.h"

#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// A question to the user in a window of its own that takes the keyboard: a message, a text below it, and
/// buttons of which the first is the default and the last is what Escape means. The index of the button, the
/// last one's when the stop is requested. Main thread.
Task<int> ask(std::string message, std::string informative, std::vector<std::string> buttons,
              std::stop_token stop);

} // namespace vantrell
