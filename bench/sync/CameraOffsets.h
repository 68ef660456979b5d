// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "FlashScene.h"
#include "MovieSigns.h"

#include <nlohmann/json_fwd.hpp>

#include <span>

namespace vantrell::bench {

/// Lays the camera's movie on the screen's as their sidecars say, and prints how far they are apart at each
/// flash. The camera has shown a ClockFace. `recording` is what the recorder told of both.
void printCameraOffsets(const nlohmann::json &recording, const MovieSigns &signs,
                        std::span<const Flash> flashes);

} // namespace vantrell::bench
