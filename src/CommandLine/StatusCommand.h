// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Says whether the device is connected, and if not why, to which project captures go, what the plan allows,
/// and what waits to be sent. Asks neither the keyring nor the service for longer than 5 s, and shows no
/// dialog.
Task<ExitCode> runStatus(StatusArguments arguments, CommandContext context, std::stop_token stop);

} // namespace vantrell
