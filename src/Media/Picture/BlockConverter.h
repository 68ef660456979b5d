// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// Of BGRX pixels.
inline constexpr int bytesPerPixel = 4;

/// Where one macroblock of an NV12 picture lies.
struct Nv12Block {
    std::uint8_t *luma;
    std::uint8_t *chroma;
    std::ptrdiff_t stride;
};

/// Converts 16 by 16 pixels of BGRX into NV12, BT.709, limited range; chroma is the mean of two by two
/// pixels. Reports whether the result differs from `previous`, which may be `out` itself.
using BlockConverter = bool (*)(const std::uint8_t *pixels, std::ptrdiff_t stride, const Nv12Block &previous,
                                const Nv12Block &out);

/// Plain code: the reference that the fast ones equal bit for bit.
bool convertBlockPortably(const std::uint8_t *pixels, std::ptrdiff_t stride, const Nv12Block &previous,
                          const Nv12Block &out);

/// The fastest converter that this processor runs.
BlockConverter fastestBlockConverter();

} // namespace vantrell
