// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PointerPicture.h"

#include "Platform/PixelBlend.h"

namespace vantrell {

void PointerPicture::draw(const PixelRect &area, std::uint8_t *pixels, std::ptrdiff_t stride) const {
    const PixelRect part = intersection(area, rect);
    for (int y = part.y; y < part.bottom(); ++y) {
        std::uint8_t *to = pixels + (y - area.y) * stride + std::ptrdiff_t(part.x - area.x) * 4;
        const std::uint32_t *from =
            shape.data() + std::ptrdiff_t(y - rect.y) * rect.width + (part.x - rect.x);
        for (int x = 0; x < part.width; ++x, to += 4) {
            if (from[x] >> 24 != 0)
                blendOver(from[x], to);
        }
    }
}

} // namespace vantrell
