// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// Preloaded into the programs of a sound server: their monotonic clock, and with it that of every virtual
// device, runs faster by SKEW_PPM millionths than the machine's.

#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <dlfcn.h>
#include <sys/timerfd.h>

namespace {

constexpr std::int64_t second = 1000000000;
constexpr std::int64_t million = 1000000;

std::int64_t skew() {
    static const std::int64_t ppm = [] {
        const char *text = std::getenv("SKEW_PPM");
        return text ? std::strtoll(text, nullptr, 10) : 0LL;
    }();
    return ppm;
}

template <typename Function>
Function *original(const char *name) {
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

timespec scaled(const timespec &time, std::int64_t numerator, std::int64_t denominator) {
    const __int128 nanoseconds = __int128(time.tv_sec) * second + time.tv_nsec;
    const auto result = std::int64_t(nanoseconds * numerator / denominator);
    return {time_t(result / second), long(result % second)};
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec *time) noexcept {
    static const auto real = original<decltype(clock_gettime)>("clock_gettime");
    const int result = real(clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC)
        *time = scaled(*time, million + skew(), million);
    return result;
}

int timerfd_settime(int fd, int flags, const itimerspec *wanted, itimerspec *old) noexcept {
    static const auto real = original<decltype(timerfd_settime)>("timerfd_settime");
    itimerspec bent = *wanted;
    // Times of day have no place in a sound server's cycles; a time of 0 switches the timer off.
    if ((flags & TFD_TIMER_ABSTIME) != 0)
        bent.it_value = scaled(wanted->it_value, million, million + skew());
    return real(fd, flags, &bent, old);
}
}
