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
constexpr int lineBytes = 64;
/// Blocks whose rows begin in one line of the processor's cache.
constexpr int blocksInLine = lineBytes / edge;

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

/// Asks for what is read and written some blocks later. The blocks' rows lie so far apart that the processor
/// does not see what comes; waiting for it took longer than converting.
void fetchAhead(const std::uint8_t *pixels, std::ptrdiff_t stride) {
    constexpr std::ptrdiff_t ahead = 3 * paddedStride;
    for (int y = 0; y < edge; ++y)
        __builtin_prefetch(pixels + y * stride + ahead);
}

/// A share of the rows with each block: all of them once in a line of the cache.
template <bool isWritten>
void fetchAhead(const Nv12Block &block, int column) {
    constexpr std::ptrdiff_t ahead = 2 * lineBytes;
    const auto fetch = [&](const std::uint8_t *from, int rows) {
        const int share = rows / blocksInLine;
        const int first = column % blocksInLine * share;
        for (int y = first; y < first + share; ++y)
            __builtin_prefetch(from + y * block.stride + ahead, isWritten);
    };
    fetch(block.luma, edge);
    fetch(block.chroma, edge / 2);
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
            } else {
                fetchAhead(pixels, stride);
            }
            const Nv12Block before = blockAt(previous, column, row);
            const Nv12Block after = blockAt(out, column, row);
            fetchAhead<false>(before, column);
            if (after.luma != before.luma)
                fetchAhead<true>(after, column);
            if (m_convert(pixels, stride, before, after))
                changed.markBlock(column, row);
        }
    }
}

} // namespace vantrell
