// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <span>

namespace vantrell {

/// One compressed access unit. Times are in the track's time scale, counted from the movie's zero.
///
/// H.264: NAL units behind 4-byte big-endian lengths, without parameter sets. AAC: one raw packet; the
/// encoder's priming comes first, at negative times when the sound starts at zero.
struct EncodedSample {
    /// Borrowed for the length of the call that takes the sample.
    std::span<const std::uint8_t> data;
    std::int64_t pts = 0;
    /// Never decreases within a track; equal to `pts` without reordering.
    std::int64_t dts = 0;
    /// Decodable on its own; true for every AAC packet.
    bool isKey = false;
};

} // namespace vantrell
