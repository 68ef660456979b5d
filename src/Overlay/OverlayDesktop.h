// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Support/Geometry.h"

#include <vector>

class QScreen;

// What the overlay has to know of the desktop below it. Main thread.

namespace vantrell {

/// Never null while there is a screen at all.
QScreen *screenOf(const Display &display);

/// What lies below shows through a window that covers the screen.
bool showsThroughOverlay();

/// The smallest rectangle that holds all windows of this process that are seen, in the desktop's pixels.
PixelRect visibleOwnWindows(const std::vector<Display> &displays);

} // namespace vantrell
