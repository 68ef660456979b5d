// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Disk/FailingDisk.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>

#include <fcntl.h>
#include <sys/types.h>

namespace {

std::atomic<int> callsLeft = 0;
std::atomic<int> failWith = 0;
std::atomic<bool> failsOn = false;
std::atomic<bool> failed = false;

bool mustFail() {
    const int error = failWith.load();
    if (error == 0)
        return false;
    const int left = --callsLeft;
    if (left > 0 || (left < 0 && !failsOn))
        return false;
    failed = true;
    errno = error;
    return true;
}

} // namespace

/// The linker sends the calls of the code under test here (--wrap), and "real" to the system.
extern "C" {
int __real_mkostemp(char *name, int flags);
int __real_mkostemp64(char *name, int flags);
ssize_t __real_write(int fd, const void *bytes, size_t count);
int __real_fsync(int fd);
int __real_rename(const char *from, const char *to);
int __real_link(const char *from, const char *to);
int __real_open(const char *path, int flags, ...);

int __wrap_mkostemp(char *name, int flags) {
    return mustFail() ? -1 : __real_mkostemp(name, flags);
}
int __wrap_mkostemp64(char *name, int flags) {
    return mustFail() ? -1 : __real_mkostemp64(name, flags);
}
ssize_t __wrap_write(int fd, const void *bytes, size_t count) {
    // Half of it arrives, as on a disk that is about to be full.
    if (failWith != 0 && callsLeft == 1 && count > 1) {
        const ssize_t written = __real_write(fd, bytes, count / 2);
        return written < 0 ? written : (mustFail(), -1);
    }
    return mustFail() ? -1 : __real_write(fd, bytes, count);
}
int __wrap_fsync(int fd) {
    return mustFail() ? -1 : __real_fsync(fd);
}
int __wrap_rename(const char *from, const char *to) {
    return mustFail() ? -1 : __real_rename(from, to);
}
int __wrap_link(const char *from, const char *to) {
    return mustFail() ? -1 : __real_link(from, to);
}
int __wrap_open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return mustFail() ? -1 : __real_open(path, flags, mode);
}
}

namespace vantrell::testing {

FailingDisk::FailingDisk(int call, int error, bool stays) {
    callsLeft = call;
    failsOn = stays;
    failed = false;
    failWith = error;
}

FailingDisk::~FailingDisk() {
    failWith = 0;
}

bool FailingDisk::hasFailed() const {
    return failed;
}

} // namespace vantrell::testing
