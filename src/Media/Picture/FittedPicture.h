// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/FFmpegPointers.h"
#include "Platform/FrameSource.h"
#include "Support/Geometry.h"

#include <cstdint>
#include <vector>

namespace vantrell {

/// A picture of a fixed size into which others of any size are scaled (`fitted`), black around. 32-bit BGRX.
/// Thread-bound.
class FittedPicture {
public:
    explicit FittedPicture(PixelSize size);

    /// The whole picture in black, valid until the next call.
    FramePatch black();
    /// Scales and returns the whole picture as one patch, valid until the next call.
    FramePatch fit(const std::uint8_t *pixels, std::ptrdiff_t stride, PixelSize source);

private:
    PixelSize m_size;
    PixelSize m_source;
    ScalerPtr m_scaler;
    std::vector<std::uint8_t> m_pixels;
};

} // namespace vantrell
