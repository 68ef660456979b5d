// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <sys/resource.h>
#include <sys/time.h>

namespace vantrell {

/// Seconds of processor that this process has used so far.
inline double ownProcessorTime() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace vantrell
