// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Wakeup.h"

#include "Support/HostTime.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>

#include <poll.h>
#include <sys/eventfd.h>

namespace vantrell {

X11Wakeup::X11Wakeup() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool X11Wakeup::wait(int fd, std::optional<double> deadline) {
    pollfd waiting[2] = {{m_event.get(), POLLIN, 0}, {fd, POLLIN, 0}};
    timespec left{};
    if (deadline) {
        const double seconds = std::max(0.0, *deadline - hostNow());
        left.tv_sec = time_t(std::floor(seconds));
        left.tv_nsec = long((seconds - std::floor(seconds)) * 1e9);
    }
    ::ppoll(waiting, 2, deadline ? &left : nullptr, nullptr);
    if (!(waiting[0].revents & POLLIN))
        return false;
    std::uint64_t count = 0;
    return ::read(m_event.get(), &count, sizeof count) == sizeof count;
}

void X11Wakeup::interrupt() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(m_event.get(), &one, sizeof one);
}

} // namespace vantrell
