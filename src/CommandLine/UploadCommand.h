// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "CommandLine/CommandContext.h"
#include "CommandLine/ExitCode.h"
#include "Support/Task.h"

#include <stop_token>

namespace vantrell {

/// Uploads files, each with the side files beside it, and what earlier runs left. Ctrl-C leaves everything to
/// be resumed.
Task<ExitCode> runUpload(UploadArguments arguments, CommandContext context, std::stop_token stop);

/// Finishes the uploads of earlier runs, also those that failed then.
Task<ExitCode> runResume(CommandContext context, std::stop_token stop);

} // namespace vantrell
