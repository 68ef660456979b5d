// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace vantrell::testing {

/// A program that a test starts. It is ended with the test, also when the test dies.
class ChildProcess {
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    /// Starts the program (searched in PATH) with the variables added to this process's environment. Its
    /// output is dropped. `inherited` stays open in it under the same number.
    explicit ChildProcess(const std::vector<std::string> &command, const Environment &environment = {},
                          int inherited = -1);
    /// Ends it and waits.
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    pid_t pid() const { return m_pid; }
    bool isRunning();
    void signal(int number) const;
    /// Waits until it has ended: its exit code, or minus the number of the signal that ended it. Nothing when
    /// its end was seen before.
    std::optional<int> waitForExit();
    /// Asks it to end, waits, and kills it when it does not.
    void terminate(std::chrono::milliseconds patience = std::chrono::seconds(5));

private:
    pid_t m_pid = -1;
};

} // namespace vantrell::testing
