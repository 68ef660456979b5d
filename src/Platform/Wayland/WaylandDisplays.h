// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Support/PlatformError.h"

#include <expected>
#include <vector>

namespace vantrell {

/// The monitors of the Wayland session as they are now, over a connection of its own, which a compositor that
/// goes away does not take the program with. The desktop's pixels are counted so that displays of different
/// scales do not overlap: corners by the largest scale, sizes by each display's own. Blocks for some
/// milliseconds, at most two seconds.
std::expected<std::vector<Display>, PlatformError> listWaylandDisplays();

} // namespace vantrell
