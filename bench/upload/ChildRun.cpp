// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ChildRun.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrell::bench {

namespace {

double seconds(const timeval &time) {
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

double median(const std::vector<RunCost> &runs, double RunCost::*figure) {
    std::vector<double> values;
    for (const RunCost &run : runs)
        values.push_back(run.*figure);
    std::ranges::sort(values);
    return values[values.size() / 2];
}

} // namespace

pid_t startChild(const Command &command, const Variables &environment) {
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    const pid_t pid = ::fork();
    if (pid != 0)
        return pid;
    for (const auto &[name, value] : environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

RunCost runChild(const Command &command, const Variables &environment) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = startChild(command, environment);
    int status = 0;
    rusage usage{};
    ::wait4(pid, &status, 0, &usage);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::cerr << command[0] << " failed" << std::endl;
        std::exit(1);
    }
    return {wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime), double(usage.ru_maxrss) / 1024};
}

RunCost medianOf(std::vector<RunCost> runs) {
    return {median(runs, &RunCost::wallSeconds), median(runs, &RunCost::cpuSeconds),
            median(runs, &RunCost::peakMiB)};
}

} // namespace vantrell::bench
