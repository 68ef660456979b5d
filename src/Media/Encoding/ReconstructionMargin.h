// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/ReconstructedPicture.h"

namespace vantrell {

// An encoder that works in slices fills the margin of its reconstruction, which repeats the picture's edge,
// on threads of its own, and may be at it still when the picture is handed out. It cannot be asked whether it
// has finished; but what was spoilt before says so.

/// Writes into the margin what no margin is.
void spoilMargin(const ReconstructedPicture &picture);

/// The margin is what it has to be, all of it.
bool hasMargin(const ReconstructedPicture &picture);

} // namespace vantrell
