// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireBuffers.h"
#include "Platform/PointerPicture.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// The pointer as a cast's buffers tell of it. A value type.
class CastPointer {
public:
    /// Takes what a buffer says; true when anything is different now.
    bool take(const PipeWireBuffer &buffer);

    /// In the buffer's pixels; none while the pointer is hidden or elsewhere.
    std::optional<Point> place() const;
    /// Where and what is to be drawn, in the buffer's pixels.
    const PointerPicture &picture() const { return m_picture; }

private:
    void takeShape(const spa_meta_cursor &cursor, std::size_t bytes);

    bool m_isShown = false;
    PixelRect m_shape;
    int m_x = 0;
    int m_y = 0;
    PointerPicture m_picture;
};

} // namespace vantrell
