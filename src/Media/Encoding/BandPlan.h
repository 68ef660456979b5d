// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/BlockArea.h"
#include "Support/BlockMap.h"

#include <optional>
#include <vector>

namespace vantrell {

/// Cuts the macroblocks that have to be encoded out of the picture: into bands of whole rows, and where few
/// in a row are touched, into strips of a part of one row; those are what can be slices of their own. In the
/// order of the slices, disjoint, in few different shapes. Empty when there is nothing to encode; nothing
/// when the picture is better encoded as a whole.
std::optional<std::vector<BlockArea>> planBands(const BlockMap &touched);

/// Of a picture of so many macroblocks, what its bands may be together.
double worthwhileShare(int blocks);

} // namespace vantrell
