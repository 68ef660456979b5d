// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vantrell {

/// A NAL unit without its start code or length.
using H264Unit = std::span<const std::uint8_t>;

enum class H264UnitType {
    slice = 1,
    keySlice = 5,
    sequenceParameters = 7,
    pictureParameters = 8,
};

/// The five bits of a unit's first byte; units are never empty.
H264UnitType typeOf(H264Unit unit);

/// The units of a byte stream with start codes (Annex B); they refer to `stream`.
std::vector<H264Unit> splitByteStream(std::span<const std::uint8_t> stream);

/// The units of a picture that lie behind their lengths of four bytes; they refer to `data`. Ends before what
/// is cut off.
std::vector<H264Unit> splitSized(std::span<const std::uint8_t> data);

/// The avcC record of one pair of parameter sets, for units behind lengths of four bytes. The sequence
/// parameters are at least four bytes long.
std::vector<std::uint8_t> avcConfiguration(H264Unit sequenceParameters, H264Unit pictureParameters);

} // namespace vantrell
