// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/JournalLock.h"

#include "Support/Log.h"
#include "Support/PlatformError.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace vantrell {

namespace {

JournalLock unlocked(JournalLock none, const char *what) {
    qCCritical(logUpload, "upload journal not locked: %s",
               PlatformError::fromErrno(what, errno).message.c_str());
    return none;
}

int lockWithoutWaiting(int fd) {
    int result = 0;
    do {
        result = ::flock(fd, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result;
}

} // namespace

std::expected<JournalLock, JournalInUse> JournalLock::acquire(const std::filesystem::path &journal) {
    const std::string path = journal.string() + ".lock";
    UniqueFd file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    // A lock made earlier on a disk that is read-only by now still locks.
    if (!file)
        file.reset(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return unlocked(JournalLock(UniqueFd()), "open");
    if (lockWithoutWaiting(file.get()) == 0)
        return JournalLock(std::move(file));
    if (errno == EWOULDBLOCK)
        return std::unexpected(JournalInUse{});
    return unlocked(JournalLock(UniqueFd()), "flock");
}

} // namespace vantrell
