// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Makes captures of the recordings that were cut off and leaves them in the captures folder. One that fails
/// does not keep the others; it is tried again the next time.
Task<ExitCode> runRecover(RecoverArguments arguments, CommandContext context, std::stop_token stop);

} // namespace vantrell
