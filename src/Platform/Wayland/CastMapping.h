// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/PipeWire/PipeWireBuffers.h"
#include "Support/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vantrell {

/// Lets the processor read the pixels of a buffer, in shared memory or in the graphics card's. Ends before
/// the buffer's memory does. Thread-bound.
class CastMapping {
public:
    CastMapping() = default;
    ~CastMapping() { close(); }
    CastMapping(const CastMapping &) = delete;
    CastMapping &operator=(const CastMapping &) = delete;

    /// False when a picture of that size is not in it or cannot be read.
    bool open(const PipeWireBuffer &buffer, PixelSize size);
    void close();

    /// The first row; null when nothing is open.
    const std::uint8_t *pixels() const { return m_pixels; }
    std::ptrdiff_t stride() const { return m_stride; }

private:
    void synchronize(std::uint64_t flags) const;

    const std::uint8_t *m_pixels = nullptr;
    std::ptrdiff_t m_stride = 0;
    /// Of a buffer in the graphics card's memory, borrowed.
    int m_dmaBuf = -1;
    void *m_mapped = nullptr;
    std::size_t m_mappedBytes = 0;
};

} // namespace vantrell
