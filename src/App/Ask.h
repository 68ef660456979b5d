// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Task.h"

#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// A question to the user: message, text below it, buttons of which the first is the default and the last is
/// what closing means. The index of the button.
using Ask = std::function<Task<int>(std::string message, std::string informative,
                                    std::vector<std::string> buttons, std::stop_token stop)>;

} // namespace vantrell
