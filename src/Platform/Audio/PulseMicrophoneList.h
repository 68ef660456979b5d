// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Microphone.h"
#include "Support/PlatformError.h"

#include <expected>
#include <vector>

namespace vantrell {

/// Asks the sound server for its microphones, the default one first. Blocks, for five seconds at most.
std::expected<std::vector<Microphone>, PlatformError> listPulseMicrophones();

} // namespace vantrell
