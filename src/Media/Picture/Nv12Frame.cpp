// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Picture/Nv12Frame.h"

#include "Support/BlockMap.h"

#include <cstring>
#include <new>

namespace vantrell {

namespace {

constexpr std::size_t alignment = 64;

int wholeBlocks(int pixels) {
    return (pixels + BlockMap::blockSize - 1) / BlockMap::blockSize * BlockMap::blockSize;
}

} // namespace

Nv12Frame::Nv12Frame(PixelSize picture)
    : m_picture(picture), m_stride(std::ptrdiff_t((std::size_t(wholeBlocks(picture.width)) + alignment - 1) /
                                                  alignment * alignment)),
      m_chromaOffset(std::size_t(m_stride) * std::size_t(wholeBlocks(picture.height))) {
    const std::size_t size = m_chromaOffset + m_chromaOffset / 2;
    m_data.reset(static_cast<std::uint8_t *>(
        std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment)));
    if (!m_data)
        throw std::bad_alloc();
    std::memset(luma(), 16, m_chromaOffset);
    std::memset(chroma(), 128, m_chromaOffset / 2);
}

void Nv12Frame::copyBlock(const Nv12Frame &from, int column, int row) {
    constexpr int size = BlockMap::blockSize;
    const std::ptrdiff_t lumaStart = row * size * m_stride + column * size;
    for (int line = 0; line < size; ++line)
        std::memcpy(luma() + lumaStart + line * m_stride, from.luma() + lumaStart + line * m_stride, size);
    const std::ptrdiff_t chromaStart = row * size / 2 * m_stride + column * size;
    for (int line = 0; line < size / 2; ++line)
        std::memcpy(chroma() + chromaStart + line * m_stride, from.chroma() + chromaStart + line * m_stride,
                    size);
}

} // namespace vantrell
