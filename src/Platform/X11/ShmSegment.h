// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <xcb/shm.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>

namespace vantrell {

/// Memory that the X server writes pictures into. Belongs to the connection's thread and ends before it.
class ShmSegment {
public:
    static std::expected<std::unique_ptr<ShmSegment>, PlatformError> create(const X11Connection &connection,
                                                                            std::size_t bytes);
    ~ShmSegment();
    ShmSegment(const ShmSegment &) = delete;
    ShmSegment &operator=(const ShmSegment &) = delete;

    xcb_shm_seg_t id() const { return m_id; }
    std::uint8_t *data() const { return m_data; }
    std::size_t size() const { return m_size; }

    /// The memory without the server: the caller unmaps `size` bytes of it, on any thread. Nothing else of
    /// the segment is used afterwards.
    std::uint8_t *releaseMemory();

private:
    ShmSegment(xcb_connection_t *connection, xcb_shm_seg_t id, std::uint8_t *data, std::size_t size);

    xcb_connection_t *m_connection;
    xcb_shm_seg_t m_id;
    std::uint8_t *m_data;
    std::size_t m_size;
};

} // namespace vantrell
