// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <string>

namespace vantrell {

/// A failure that libav* reported; `what` says what was tried, for example "open encoder".
PlatformError ffmpegError(const std::string &what, int code);

} // namespace vantrell
