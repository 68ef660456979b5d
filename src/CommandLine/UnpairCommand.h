// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Disconnects this device: removes the key from the keyring.
Task<ExitCode> runUnpair(UnpairArguments arguments, CommandContext context, std::stop_token stop);

} // namespace vantrell
