// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/AtomicFile.h"

#include "Support/UniqueFd.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace vantrell {

namespace {

std::expected<void, PlatformError> writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return std::unexpected(PlatformError::fromErrno("write", errno));
        }
        bytes.remove_prefix(size_t(written));
    }
    return {};
}

std::expected<void, PlatformError> fillAndRename(UniqueFd file, const std::string &temporary,
                                                 const std::filesystem::path &path, std::string_view bytes) {
    if (const auto written = writeAll(file.get(), bytes); !written)
        return written;
    if (::fsync(file.get()) != 0)
        return std::unexpected(PlatformError::fromErrno("fsync", errno));
    // The result of close matters: network file systems report a full disk only here.
    if (::close(file.release()) != 0)
        return std::unexpected(PlatformError::fromErrno("close", errno));
    if (::rename(temporary.c_str(), path.c_str()) != 0)
        return std::unexpected(PlatformError::fromErrno("rename", errno));
    return {};
}

} // namespace

std::expected<void, PlatformError> writeFileAtomically(const std::filesystem::path &path,
                                                       std::string_view bytes) {
    std::string temporary = path.string() + ".XXXXXX";
    UniqueFd file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file)
        return std::unexpected(PlatformError::fromErrno("create " + path.filename().string(), errno));
    if (const auto done = fillAndRename(std::move(file), temporary, path, bytes); !done) {
        ::unlink(temporary.c_str());
        return done;
    }
    // Without this a power cut may undo the rename.
    const UniqueFd folder(::open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return std::unexpected(PlatformError::fromErrno("open folder", errno));
    if (::fsync(folder.get()) != 0)
        return std::unexpected(PlatformError::fromErrno("fsync folder", errno));
    return {};
}

std::expected<std::string, PlatformError> readFile(const std::filesystem::path &path) {
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return std::unexpected(PlatformError::fromErrno("open " + path.filename().string(), errno));
    std::string bytes;
    struct stat info{};
    if (::fstat(file.get(), &info) == 0 && info.st_size > 0)
        bytes.reserve(size_t(info.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::unexpected(PlatformError::fromErrno("read " + path.filename().string(), errno));
        if (count == 0)
            return bytes;
        bytes.append(buffer, size_t(count));
    }
}

} // namespace vantrell
