// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/ColourMatrix.h"
#include "Media/Picture/Nv12Frame.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <vector>

extern "C" {
#include <x264.h>
}

namespace vantrell {

// What every encoder on libx264 has in common.

struct X264Deleter {
    void operator()(x264_t *encoder) const { x264_encoder_close(encoder); }
};
using X264Ptr = std::unique_ptr<x264_t, X264Deleter>;

/// The picture's size, rounded up to even numbers.
PixelSize x264EncodedSize(PixelSize picture);

/// The preset "superfast" for a stream of a movie: a picture goes in and comes out in one call, key frames
/// come when they are asked for, times are VideoEncoder::timeScale.
x264_param_t x264Parameters(PixelSize encoded, ColourMatrix matrix);

/// Refers to the frame.
x264_picture_t x264Picture(const Nv12Frame &frame, std::int64_t presentationTime);

/// The avcC record.
std::expected<std::vector<std::uint8_t>, PlatformError> x264Configuration(x264_t &encoder);

} // namespace vantrell
