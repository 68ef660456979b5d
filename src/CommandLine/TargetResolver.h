// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/Arguments.h"
#include "Platform/CaptureBackend.h"
#include "Recording/RecordingTarget.h"

#include <expected>

namespace vantrell {

/// Finds what the command line names among the displays and windows of now; the error's sentence says what is
/// not there.
std::expected<RecordingTarget, PlatformError> resolveTarget(const TargetArguments &arguments,
                                                            CaptureBackend &backend);

} // namespace vantrell
