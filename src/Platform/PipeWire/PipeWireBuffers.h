// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWirePointers.h"

#include <spa/buffer/meta.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace vantrell {

/// What a stream's buffers shall be like; the other side may leave out each piece of metadata.
struct PipeWireBufferWishes {
    /// How many, if the other side leaves the choice.
    int count = 8;
    /// SPA_DATA_... as bits.
    std::uint32_t memory = (1u << SPA_DATA_MemFd) | (1u << SPA_DATA_MemPtr);
    /// Time stamps.
    bool header = true;
    /// Which part of the buffer is the picture.
    bool crop = false;
    /// How the picture is turned in it.
    bool transform = false;
    /// Up to so many rectangles that changed; 0 for none.
    int damageRegions = 0;
    /// Pointers of up to so many pixels square; 0 for none.
    int cursorPixels = 0;
};

/// A buffer that was taken from a stream; goes back to it at the end. Loop's thread; gone before the stream.
class PipeWireBuffer {
public:
    PipeWireBuffer(pw_stream *stream, pw_buffer *buffer) : m_stream(stream), m_buffer(buffer) {}
    ~PipeWireBuffer() { giveBack(); }
    PipeWireBuffer(PipeWireBuffer &&other) noexcept
        : m_stream(other.m_stream), m_buffer(std::exchange(other.m_buffer, nullptr)) {}
    PipeWireBuffer &operator=(PipeWireBuffer &&other) noexcept {
        if (this != &other) {
            giveBack();
            m_stream = other.m_stream;
            m_buffer = std::exchange(other.m_buffer, nullptr);
        }
        return *this;
    }

    bool is(const pw_buffer *buffer) const { return m_buffer == buffer; }
    /// The stream has taken it away: it does not go back.
    void forget() { m_buffer = nullptr; }

    const spa_buffer &operator*() const { return *m_buffer->buffer; }
    const spa_buffer *operator->() const { return m_buffer->buffer; }

    /// A piece of metadata; null where the buffer has none.
    template <typename Meta>
    const Meta *meta(std::uint32_t type) const {
        return static_cast<const Meta *>(spa_buffer_find_meta_data(m_buffer->buffer, type, sizeof(Meta)));
    }
    /// All of a kind, for damage and pointers.
    const spa_meta *metas(std::uint32_t type) const { return spa_buffer_find_meta(m_buffer->buffer, type); }

    /// No picture, or a spoilt one; its metadata may be good all the same.
    bool isWithoutPicture() const;
    /// Nanoseconds of CLOCK_MONOTONIC; none where the sender tells no time.
    std::optional<std::int64_t> presentationTime() const;

private:
    void giveBack() {
        if (m_buffer)
            pw_stream_queue_buffer(m_stream, m_buffer);
    }

    pw_stream *m_stream;
    pw_buffer *m_buffer;
};

} // namespace vantrell
