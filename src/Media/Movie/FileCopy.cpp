// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/FileCopy.h"

#include "Media/Movie/MovieError.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace vantrell {

namespace {

constexpr std::uint64_t copyStep = std::uint64_t(8) << 20;
constexpr std::size_t bufferBytes = std::size_t(1) << 20;

/// Bytes copied inside the kernel; 0 where it cannot copy between these files.
std::expected<std::uint64_t, PlatformError> copyInKernel(int from, std::uint64_t fromOffset, int to,
                                                         std::uint64_t toOffset, std::uint64_t size) {
    auto source = off_t(fromOffset);
    auto target = off_t(toOffset);
    const ssize_t count = ::copy_file_range(from, &source, to, &target, size, 0);
    if (count >= 0)
        return std::uint64_t(count);
    switch (errno) {
    case EXDEV:
    case EINVAL:
    case ENOSYS:
    case EOPNOTSUPP:
    case EINTR:
        return 0;
    default:
        return std::unexpected(PlatformError::fromErrno("copy", errno));
    }
}

std::expected<std::uint64_t, PlatformError> copyThroughBuffer(const DiskFile &from, std::uint64_t fromOffset,
                                                              const DiskFile &to, std::uint64_t toOffset,
                                                              std::uint64_t size) {
    std::vector<std::uint8_t> buffer(std::size_t(std::min<std::uint64_t>(size, bufferBytes)));
    const auto count = from.readAt(fromOffset, buffer);
    if (!count)
        return std::unexpected(count.error());
    if (*count == 0)
        return std::unexpected(movieError(MovieFault::shrank, "a movie shrank while it was copied"));
    if (const auto written = to.writeAt(toOffset, std::span(buffer).first(*count)); !written)
        return std::unexpected(written.error());
    return *count;
}

} // namespace

std::expected<void, std::variant<PlatformError, Cancelled>>
copyBytes(const DiskFile &from, std::uint64_t fromOffset, const DiskFile &to, std::uint64_t toOffset,
          std::uint64_t size, std::stop_token stop) {
    while (size > 0) {
        if (stop.stop_requested())
            return std::unexpected(Cancelled{});
        const std::uint64_t part = std::min(size, copyStep);
        auto count = copyInKernel(from.fd(), fromOffset, to.fd(), toOffset, part);
        if (count && *count == 0)
            count = copyThroughBuffer(from, fromOffset, to, toOffset, part);
        if (!count)
            return std::unexpected(count.error());
        ::sync_file_range(to.fd(), off_t(toOffset), off_t(*count), SYNC_FILE_RANGE_WRITE);
        fromOffset += *count;
        toOffset += *count;
        size -= *count;
    }
    return {};
}

} // namespace vantrell
