// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

std::unexpected<FileLockError> failure(const char *what, int errorNumber) {
    return std::unexpected(
        FileLockError{errorNumber == EWOULDBLOCK, PlatformError::fromErrno(what, errorNumber)});
}

} // namespace

std::expected<FileLock, FileLockError> FileLock::acquire(const std::filesystem::path &guarded,
                                                         std::chrono::milliseconds patience) {
    const std::string path = guarded.string() + ".lock";
    UniqueFd file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    // A lock made earlier on a disk that is read-only by now still locks.
    if (!file)
        file.reset(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return failure("open", errno);
    // Looked at again and again, since a wait inside flock has no limit and its owner may be stopped.
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        const bool mayPass = error == EINTR || error == EWOULDBLOCK;
        if (!mayPass || (error == EWOULDBLOCK && std::chrono::steady_clock::now() >= deadline))
            return failure("flock", error);
        if (error == EWOULDBLOCK)
            std::this_thread::sleep_for(5ms);
    }
    return FileLock(std::move(file));
}

} // namespace vantrell
