// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace vantrell::bench {

/// What a process took from its start to its end.
struct RunCost {
    double wallSeconds = 0;
    /// User and system time.
    double cpuSeconds = 0;
    double peakMiB = 0;
};

using Command = std::vector<std::string>;
using Variables = std::vector<std::pair<std::string, std::string>>;

pid_t startChild(const Command &command, const Variables &environment);

/// Runs a program to its end. The bench ends when it fails.
RunCost runChild(const Command &command, const Variables &environment);

/// The run with the median of each figure.
RunCost medianOf(std::vector<RunCost> runs);

} // namespace vantrell::bench
