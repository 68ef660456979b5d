// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireBuffers.h"

namespace vantrell {

bool PipeWireBuffer::isWithoutPicture() const {
    const spa_buffer &buffer = *m_buffer->buffer;
    if (buffer.n_datas == 0 || buffer.datas[0].chunk->size == 0 ||
        (buffer.datas[0].chunk->flags & SPA_CHUNK_FLAG_CORRUPTED) != 0)
        return true;
    const auto *header = meta<spa_meta_header>(SPA_META_Header);
    return header && (header->flags & SPA_META_HEADER_FLAG_CORRUPTED) != 0;
}

std::optional<std::int64_t> PipeWireBuffer::presentationTime() const {
    const auto *header = meta<spa_meta_header>(SPA_META_Header);
    return header && header->pts > 0 ? std::optional(header->pts) : std::nullopt;
}

} // namespace vantrell
