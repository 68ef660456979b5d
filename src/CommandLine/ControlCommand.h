// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// `area`, `window`, `screen`, `toggle`, `pause`, `stop`, `quit`: what the hot keys and the tray do. A tool
/// starts the application when it does not run.
Task<ExitCode> runControl(ControlArguments arguments, CommandContext context, std::stop_token stop);

} // namespace vantrell
