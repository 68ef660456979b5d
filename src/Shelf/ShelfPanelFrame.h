// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

namespace vantrell {

/// Where the shelf's panel lies for so many cards: at the right edge of `visible`, the part of the display
/// that panels and docks leave free. Points, top-left origin.
Rect shelfPanelFrame(int cardCount, const Rect &visible);

} // namespace vantrell
