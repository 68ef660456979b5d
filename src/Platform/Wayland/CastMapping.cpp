// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastMapping.h"

#include <cerrno>

#include <linux/dma-buf.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

namespace vantrell {

namespace {

constexpr int castBytesPerPixel = 4;

} // namespace

bool CastMapping::open(const PipeWireBuffer &buffer, PixelSize size) {
    close();
    if (buffer->n_datas == 0 || size.isEmpty())
        return false;
    const spa_data &data = buffer->datas[0];
    const std::ptrdiff_t row = std::ptrdiff_t(size.width) * castBytesPerPixel;
    // Some tell no stride where the rows follow each other.
    const std::ptrdiff_t stride = data.chunk->stride == 0 ? row : data.chunk->stride;
    if (stride < row)
        return false;
    const std::size_t end =
        data.chunk->offset + std::size_t(stride) * std::size_t(size.height - 1) + std::size_t(row);
    const auto *memory = static_cast<const std::uint8_t *>(data.data);
    if (data.type != SPA_DATA_DmaBuf && (!memory || end > data.maxsize))
        return false;
    if (data.type == SPA_DATA_DmaBuf) {
        if (!memory) {
            m_mappedBytes = data.mapoffset + end;
            m_mapped = ::mmap(nullptr, m_mappedBytes, PROT_READ, MAP_SHARED, int(data.fd), 0);
            if (m_mapped == MAP_FAILED) {
                m_mapped = nullptr;
                return false;
            }
            memory = static_cast<const std::uint8_t *>(m_mapped) + data.mapoffset;
        }
        m_dmaBuf = int(data.fd);
        synchronize(DMA_BUF_SYNC_START | DMA_BUF_SYNC_READ);
    }
    m_pixels = memory + data.chunk->offset;
    m_stride = stride;
    return true;
}

void CastMapping::close() {
    if (m_dmaBuf >= 0)
        synchronize(DMA_BUF_SYNC_END | DMA_BUF_SYNC_READ);
    if (m_mapped)
        ::munmap(m_mapped, m_mappedBytes);
    m_dmaBuf = -1;
    m_mapped = nullptr;
    m_pixels = nullptr;
}

void CastMapping::synchronize(std::uint64_t flags) const {
    const dma_buf_sync sync{flags};
    while (::ioctl(m_dmaBuf, DMA_BUF_IOCTL_SYNC, &sync) < 0 && (errno == EINTR || errno == EAGAIN)) {
    }
}

} // namespace vantrell
