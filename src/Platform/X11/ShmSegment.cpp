// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/ShmSegment.h"

#include "Platform/ScreenError.h"
#include "Support/UniqueFd.h"

#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace vantrell {

ShmSegment::ShmSegment(xcb_connection_t *connection, xcb_shm_seg_t id, std::uint8_t *data, std::size_t size)
    : m_connection(connection), m_id(id), m_data(data), m_size(size) {}

ShmSegment::~ShmSegment() {
    if (m_data)
        ::munmap(releaseMemory(), m_size);
}

std::uint8_t *ShmSegment::releaseMemory() {
    xcb_shm_detach(m_connection, m_id);
    xcb_flush(m_connection);
    return std::exchange(m_data, nullptr);
}

std::expected<std::unique_ptr<ShmSegment>, PlatformError> ShmSegment::create(const X11Connection &connection,
                                                                             std::size_t bytes) {
    const auto failure = [] {
        return std::unexpected(
            screenError(ScreenErrorCode::outOfMemory, "Not enough memory to capture the screen"));
    };
    const auto version =
        xcbReply(connection.xcb(), xcb_shm_query_version(connection.xcb()), xcb_shm_query_version_reply);
    if (!version || version->major_version < 1 || (version->major_version == 1 && version->minor_version < 2))
        return std::unexpected(screenError(ScreenErrorCode::missingExtension,
                                           "The display server lacks the extension MIT-SHM 1.2"));

    UniqueFd fd(::memfd_create("vantrell-capture", MFD_CLOEXEC));
    if (!fd || ::ftruncate(fd.get(), off_t(bytes)) != 0)
        return failure();
    void *memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
    if (memory == MAP_FAILED)
        return failure();
    const xcb_shm_seg_t id = xcb_generate_id(connection.xcb());
    // The request takes the descriptor over.
    const auto cookie = xcb_shm_attach_fd_checked(connection.xcb(), id, fd.release(), 0);
    const XcbPointer<xcb_generic_error_t> error(xcb_request_check(connection.xcb(), cookie));
    if (error || connection.isBroken()) {
        ::munmap(memory, bytes);
        return std::unexpected(
            screenError(ScreenErrorCode::missingExtension,
                        "The display server shares no memory with this session (MIT-SHM)"));
    }
    return std::unique_ptr<ShmSegment>(
        new ShmSegment(connection.xcb(), id, static_cast<std::uint8_t *>(memory), bytes));
}

} // namespace vantrell
