// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// Bytes of a pixel in all formats that casts come in.
constexpr int castPixelBytes = 4;

/// Copies pixels that lie `step` bytes apart into a row of BGRX.
void copyCastPixels(const std::uint8_t *from, std::ptrdiff_t step, PixelFormat format, std::uint8_t *to,
                    int pixels);

} // namespace vantrell
