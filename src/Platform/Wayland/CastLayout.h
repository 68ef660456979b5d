// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireBuffers.h"
#include "Support/Geometry.h"

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// How a picture lies in its buffer: a window may fill only a part of one, and a display that is turned sends
/// what its own rows hold. A value.
class CastLayout {
public:
    CastLayout() = default;
    /// Of a buffer of that size, by its metadata.
    CastLayout(const PipeWireBuffer &buffer, PixelSize size);

    bool operator==(const CastLayout &) const = default;
    bool isEmpty() const { return m_crop.isEmpty(); }

    /// Of the picture as it is seen.
    PixelSize size() const;
    /// Where a part of the buffer is seen in the picture; may reach beyond it.
    PixelRect seen(const PixelRect &inBuffer) const;

    /// The way through the buffer's memory along the picture, in bytes.
    struct Walk {
        /// From the buffer's first pixel to the picture's.
        std::ptrdiff_t origin;
        /// To the pixel on the right and to the one below.
        std::ptrdiff_t step;
        std::ptrdiff_t stride;
    };
    /// `stride`: from a row of the buffer to the next.
    Walk walk(std::ptrdiff_t stride) const;

private:
    PixelRect m_crop;
    /// The picture's columns are the buffer's rows.
    bool m_isTurned = false;
    /// The buffer's rows run against the picture, and its columns do.
    bool m_isMirroredX = false;
    bool m_isMirroredY = false;
};

} // namespace vantrell
