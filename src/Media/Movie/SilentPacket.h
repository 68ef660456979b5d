// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/TrackDescription.h"

#include <cstdint>
#include <vector>

namespace vantrell {

/// A compressed packet that decodes to silence within this track; empty when the track's codec is not the AAC
/// of this system.
std::vector<std::uint8_t> makeSilentPacket(const TrackDescription &track);

} // namespace vantrell
