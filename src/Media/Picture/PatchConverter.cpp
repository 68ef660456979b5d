// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Picture/PatchConverter.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vantrell {

namespace {

constexpr int edge = BlockMap::blockSize;
constexpr int paddedStride = edge * bytesPerPixel;

using PaddedBlock = std::array<std::uint8_t, std::size_t(edge) * paddedStride>;

/// A block that reaches over the picture's edge, filled by repeating the edge.
void fillBlock(PaddedBlock &block, const std::uint8_t *pixels, std::ptrdiff_t stride, int width, int height) {
    for (int y = 0; y < edge; ++y) {
        const std::uint8_t *from = pixels + std::min(y, height - 1) * stride;
        std::uint8_t *to = block.data() + y * paddedStride;
        std::memcpy(to, from, std::size_t(width) * bytesPerPixel);
        for (int x = width; x < edge; ++x)
            std::memcpy(to + x * bytesPerPixel, from + std::ptrdiff_t(width - 1) * bytesPerPixel,
                        bytesPerPixel);
    }
}

Nv12Block blockAt(const Nv12Frame &frame, int column, int row) {
    // The converter only reads through the block that it takes as the previous one.
    auto &writable = const_cast<Nv12Frame &>(frame);
    return {writable.luma() + row * edge * frame.stride() + column * edge,
            writable.chroma() + row * edge / 2 * frame.stride() + column * edge, frame.stride()};
}

} // namespace

void PatchConverter::convert(const FramePatch &patch, const Nv12Frame &previous, Nv12Frame &out,
                             BlockMap &changed) const {
    PaddedBlock padded;
    for (int y = 0; y < patch.rect.height; y += edge) {
        const int row = (patch.rect.y + y) / edge;
        for (int x = 0; x < patch.rect.width; x += edge) {
            const int column = (patch.rect.x + x) / edge;
            const std::uint8_t *pixels = patch.pixels + y * patch.stride + std::ptrdiff_t(x) * bytesPerPixel;
            std::ptrdiff_t stride = patch.stride;
            const int width = std::min(edge, patch.rect.width - x);
            const int height = std::min(edge, patch.rect.height - y);
            if (width < edge || height < edge) {
                fillBlock(padded, pixels, stride, width, height);
                pixels = padded.data();
                stride = paddedStride;
            }
            if (m_convert(pixels, stride, blockAt(previous, column, row), blockAt(out, column, row)))
                changed.markBlock(column, row);
        }
    }
}

} // namespace vantrell
