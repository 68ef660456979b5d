// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/DiskFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace vantrell {

namespace {

std::expected<void, PlatformError> posixResult(const char *what, int result) {
    if (result != 0)
        return std::unexpected(PlatformError::fromErrno(what, errno));
    return {};
}

std::expected<UniqueFd, PlatformError> openFile(const std::filesystem::path &path, int flags) {
    UniqueFd fd(::open(path.c_str(), flags | O_CLOEXEC, 0600));
    if (!fd)
        return std::unexpected(PlatformError::fromErrno("open " + path.filename().string(), errno));
    return fd;
}

} // namespace

std::expected<DiskFile, PlatformError> DiskFile::create(const std::filesystem::path &path) {
    auto fd = openFile(path, O_RDWR | O_CREAT | O_EXCL);
    if (!fd)
        return std::unexpected(fd.error());
    return DiskFile(std::move(*fd));
}

std::expected<DiskFile, PlatformError> DiskFile::openForReading(const std::filesystem::path &path) {
    auto fd = openFile(path, O_RDONLY);
    if (!fd)
        return std::unexpected(fd.error());
    return DiskFile(std::move(*fd));
}

std::expected<DiskFile, PlatformError> DiskFile::openForWriting(const std::filesystem::path &path) {
    auto fd = openFile(path, O_RDWR);
    if (!fd)
        return std::unexpected(fd.error());
    return DiskFile(std::move(*fd));
}

std::expected<DiskFile, PlatformError> DiskFile::createNameless(const std::filesystem::path &folder) {
    auto fd = openFile(folder, O_RDWR | O_TMPFILE);
    if (!fd)
        return std::unexpected(fd.error());
    return DiskFile(std::move(*fd));
}

std::expected<void, PlatformError> DiskFile::writeAt(std::uint64_t offset,
                                                     std::span<const std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(m_fd.get(), bytes.data(), bytes.size(), off_t(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::unexpected(PlatformError::fromErrno("write", errno));
        bytes = bytes.subspan(std::size_t(count));
        offset += std::uint64_t(count);
    }
    return {};
}

std::expected<std::size_t, PlatformError> DiskFile::readAt(std::uint64_t offset,
                                                           std::span<std::uint8_t> bytes) const {
    std::size_t total = 0;
    while (total < bytes.size()) {
        const ssize_t count =
            ::pread(m_fd.get(), bytes.data() + total, bytes.size() - total, off_t(offset + total));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::unexpected(PlatformError::fromErrno("read", errno));
        if (count == 0)
            break;
        total += std::size_t(count);
    }
    return total;
}

std::expected<std::uint64_t, PlatformError> DiskFile::size() const {
    struct stat info{};
    if (::fstat(m_fd.get(), &info) != 0)
        return std::unexpected(PlatformError::fromErrno("stat", errno));
    return std::uint64_t(info.st_size);
}

std::expected<void, PlatformError> DiskFile::truncate(std::uint64_t size) const {
    return posixResult("truncate", ::ftruncate(m_fd.get(), off_t(size)));
}

std::expected<void, PlatformError> DiskFile::syncData() const {
    return posixResult("fdatasync", ::fdatasync(m_fd.get()));
}

std::expected<void, PlatformError> DiskFile::sync() const {
    return posixResult("fsync", ::fsync(m_fd.get()));
}

std::expected<void, PlatformError> DiskFile::reserve(std::uint64_t size) const {
    const auto done = posixResult("fallocate", ::fallocate(m_fd.get(), FALLOC_FL_KEEP_SIZE, 0, off_t(size)));
    if (!done &&
        (done.error().code == EOPNOTSUPP || done.error().code == ENOSYS || done.error().code == EINTR))
        return {};
    return done;
}

std::expected<void, PlatformError> DiskFile::lock() const {
    return posixResult("lock", ::flock(m_fd.get(), LOCK_EX | LOCK_NB));
}

std::expected<void, PlatformError> syncFolder(const std::filesystem::path &folder) {
    const auto fd = openFile(folder.empty() ? std::filesystem::path(".") : folder, O_RDONLY | O_DIRECTORY);
    if (!fd)
        return std::unexpected(fd.error());
    return posixResult("fsync folder", ::fsync(fd->get()));
}

} // namespace vantrell
