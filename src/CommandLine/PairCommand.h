// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Connects this device to the user's account: prints the address of the approval page, opens it in the
/// browser when there is one, and waits until the pairing has ended.
Task<ExitCode> runPair(PairArguments arguments, CommandContext context, std::stop_token stop);

} // namespace vantrell
