// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "FlashScene.h"
#include "MovieSigns.h"

#include <span>

namespace vantrell::bench {

/// Finds the beep of each flash in one of the movie's tracks and prints by how much they are apart, less by
/// how much they were apart when they were made. `output`: which of the outputs the track listens to.
void printOffsets(const MovieSigns &signs, const MovieSigns::Track &track, std::span<const Flash> flashes,
                  std::size_t output);

} // namespace vantrell::bench
