// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>

#include <sys/types.h>

namespace vantrell::bench {

/// What a process and all its descendants have used so far, as far as they are still there.
struct ProcessTreeUse {
    double cpuSeconds = 0;
    /// Proportional memory.
    double pssMiB = 0;
    std::uint64_t voluntarySwitches = 0;
};

ProcessTreeUse useOf(pid_t root);

} // namespace vantrell::bench
