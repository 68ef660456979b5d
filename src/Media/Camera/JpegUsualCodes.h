// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <span>

namespace vantrell {

/// The four Huffman tables that nearly all cameras use and some leave out of their pictures (ITU-T T.81,
/// annex K.3), as a segment has them.
std::span<const std::uint8_t> usualJpegCodes();

} // namespace vantrell
