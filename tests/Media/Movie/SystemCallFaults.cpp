// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "SystemCallFaults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace vantrell::testing {

namespace {

std::atomic<SystemCallFaults::Kind> armedKind{SystemCallFaults::Kind::none};
std::atomic<bool> isCounting{false};
std::atomic<int> faultyCall{0};
std::atomic<int> faultError{0};
std::atomic<int> madeCalls{0};

enum class Verdict { pass, fail, die };

Verdict judge() {
    if (!isCounting)
        return Verdict::pass;
    const int call = ++madeCalls;
    switch (armedKind) {
    case SystemCallFaults::Kind::failFrom:
        return call >= faultyCall ? Verdict::fail : Verdict::pass;
    case SystemCallFaults::Kind::failOnce:
        return call == faultyCall ? Verdict::fail : Verdict::pass;
    case SystemCallFaults::Kind::kill:
        return call == faultyCall ? Verdict::die : Verdict::pass;
    case SystemCallFaults::Kind::none:
        break;
    }
    return Verdict::pass;
}

template <typename Function>
Function next(const char *name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

template <typename Call>
auto faulty(Call call) -> decltype(call()) {
    switch (judge()) {
    case Verdict::pass:
        return call();
    case Verdict::die:
        ::raise(SIGKILL);
        break;
    case Verdict::fail:
        break;
    }
    errno = faultError;
    return -1;
}

} // namespace

void SystemCallFaults::arm(Kind kind, int call, int error) {
    armedKind = kind;
    faultyCall = call;
    faultError = error;
    madeCalls = 0;
    isCounting = true;
}

void SystemCallFaults::disarm() {
    isCounting = false;
    armedKind = Kind::none;
}

int SystemCallFaults::callCount() {
    return madeCalls;
}

} // namespace vantrell::testing

using namespace vantrell::testing;

extern "C" {

ssize_t pwrite(int fd, const void *bytes, size_t size, off_t offset) {
    static const auto real = next<ssize_t (*)(int, const void *, size_t, off_t)>("pwrite");
    switch (judge()) {
    case Verdict::pass:
        return real(fd, bytes, size, offset);
    case Verdict::die:
        real(fd, bytes, size / 2, offset);
        ::raise(SIGKILL);
        break;
    case Verdict::fail:
        // A disk that fills up takes what still fits.
        real(fd, bytes, size / 2, offset);
        break;
    }
    errno = faultError;
    return -1;
}

int fsync(int fd) {
    static const auto real = next<int (*)(int)>("fsync");
    return faulty([fd] { return real(fd); });
}

int fdatasync(int fd) {
    static const auto real = next<int (*)(int)>("fdatasync");
    return faulty([fd] { return real(fd); });
}

int ftruncate(int fd, off_t size) noexcept {
    static const auto real = next<int (*)(int, off_t)>("ftruncate");
    return faulty([fd, size] { return real(fd, size); });
}

int fallocate(int fd, int mode, off_t offset, off_t size) {
    static const auto real = next<int (*)(int, int, off_t, off_t)>("fallocate");
    return faulty([=] { return real(fd, mode, offset, size); });
}

int unlink(const char *path) noexcept {
    static const auto real = next<int (*)(const char *)>("unlink");
    // Removing needs no room: a full disk does not fail it.
    if (armedKind == SystemCallFaults::Kind::failFrom)
        return real(path);
    return faulty([path] { return real(path); });
}
}
