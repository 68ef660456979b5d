// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <map>
#include <string>
#include <vector>

namespace vantrell {

/// Starts a program that lives on by itself: without our standard streams and blocked signals, with
/// `variables` added to our environment. False when it cannot be started. Does not wait for it. Main thread.
bool startDetached(const std::string &program, const std::vector<std::string> &arguments = {},
                   const std::map<std::string, std::string> &variables = {});

} // namespace vantrell
