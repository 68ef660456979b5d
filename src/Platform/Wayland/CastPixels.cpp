// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastPixels.h"

#include <cstring>

namespace vantrell {

void copyCastPixels(const std::uint8_t *from, std::ptrdiff_t step, PixelFormat format, std::uint8_t *to,
                    int pixels) {
    const bool isSwapped = format == PixelFormat::rgbx;
    if (!isSwapped && step == castPixelBytes) {
        std::memcpy(to, from, std::size_t(pixels) * castPixelBytes);
        return;
    }
    for (int x = 0; x < pixels; ++x, from += step, to += castPixelBytes) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, from, sizeof pixel);
        if (isSwapped)
            pixel = (pixel & 0xff00ff00u) | (pixel & 0xffu) << 16 | (pixel >> 16 & 0xffu);
        std::memcpy(to, &pixel, sizeof pixel);
    }
}

} // namespace vantrell
