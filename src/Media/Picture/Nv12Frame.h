// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vantrell {

/// A picture in NV12 (luma, then interleaved chroma at half size), whole macroblocks large: what lies right
/// of and below the picture repeats its edge. Owns its memory; starts black.
class Nv12Frame {
public:
    explicit Nv12Frame(PixelSize picture);

    /// The picture without the filling of the last macroblocks.
    PixelSize picture() const { return m_picture; }
    /// Bytes from one row to the next, of luma and of chroma.
    std::ptrdiff_t stride() const { return m_stride; }
    std::uint8_t *luma() { return m_data.get(); }
    const std::uint8_t *luma() const { return m_data.get(); }
    std::uint8_t *chroma() { return m_data.get() + m_chromaOffset; }
    const std::uint8_t *chroma() const { return m_data.get() + m_chromaOffset; }

    /// Copies one macroblock from a frame of the same size.
    void copyBlock(const Nv12Frame &from, int column, int row);

private:
    struct Free {
        void operator()(std::uint8_t *data) const { std::free(data); }
    };

    PixelSize m_picture;
    std::ptrdiff_t m_stride;
    std::size_t m_chromaOffset;
    std::unique_ptr<std::uint8_t, Free> m_data;
};

} // namespace vantrell
