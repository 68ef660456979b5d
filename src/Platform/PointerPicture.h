// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantrell {

/// What the pointer looks like and where that lies, for drawing it into captured pixels. A value type.
struct PointerPicture {
    /// In the pixels of whatever is captured; empty when there is nothing to draw.
    PixelRect rect;
    /// As large as `rect`, premultiplied ARGB.
    std::vector<std::uint32_t> shape;

    /// Draws the part that lies on `area`, whose pixels are BGRX.
    void draw(const PixelRect &area, std::uint8_t *pixels, std::ptrdiff_t stride) const;
};

} // namespace vantrell
