// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/SmallEncoders.h"
#include "Media/Libav/FFmpegPointers.h"
#include "Support/Geometry.h"
#include "Support/PlatformError.h"

#include <atomic>
#include <expected>

namespace vantrell {

/// The picture that a decoder made is the one that the encoder reckons with, bit for bit.
bool equalsDecoded(const ReconstructedPicture &picture, const AVFrame &decoded);

/// What is tried before bands are used.
struct BandTrial {
    /// A picture as wide as those to come. Only the lowest rows of a high one are tried.
    PixelSize picture;
    /// Encoded as pictures of more than that size are.
    bool isLarge = false;
    SmallEncoderFactory makeSmall = SmallEncoder::create;

    /// Has a band encoder encode pictures of letters, windows that move and films, decodes them and compares
    /// them bit for bit with what the encoder takes for their reconstruction: with another library, or
    /// another build of it, the pictures that bands refer to may lie elsewhere. Blocks for some 100 ms; ends
    /// early with an error when `isStopping`. Reentrant.
    std::expected<void, PlatformError> run(const std::atomic<bool> &isStopping) const;
};

} // namespace vantrell
