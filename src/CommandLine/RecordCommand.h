// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Records until the time is over, a signal comes (SIGINT, SIGTERM) or the stream dies; SIGUSR1 pauses and
/// resumes. What was recorded is saved whatever ends it.
Task<ExitCode> runRecord(RecordArguments arguments, CommandContext context, std::stop_token stop);

} // namespace vantrell
