// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Looks at all that recording needs, at once, and says line by line how it is and what to do about it. Ends
/// within ten seconds whatever does not answer; starts nothing that shows a dialog. Fails when something that
/// is wanted does not work.
Task<ExitCode> runDoctor(CommandContext context, std::stop_token stop);

} // namespace vantrell
