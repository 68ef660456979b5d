// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrell::testing {

ChildProcess::ChildProcess(const std::vector<std::string> &command, const Environment &environment,
                           int inherited) {
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    std::vector<std::string> variables;
    for (char **entry = environ; *entry; ++entry) {
        const std::string text(*entry);
        bool replaced = false;
        for (const auto &[name, value] : environment)
            replaced |= text.starts_with(name + "=");
        if (!replaced)
            variables.push_back(text);
    }
    for (const auto &[name, value] : environment)
        variables.push_back(name + "=" + value);
    std::vector<char *> pointers;
    for (std::string &variable : variables)
        pointers.push_back(variable.data());
    pointers.push_back(nullptr);

    const pid_t parent = ::getpid();
    m_pid = ::fork();
    if (m_pid < 0)
        throw std::runtime_error("fork failed");
    if (m_pid > 0)
        return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(127);
    const int null = ::open("/dev/null", O_RDWR);
    ::dup2(null, 0);
    ::dup2(null, 1);
    if (!std::getenv("VANTRELL_TEST_VERBOSE"))
        ::dup2(null, 2);
    if (inherited >= 0)
        ::fcntl(inherited, F_SETFD, 0);
    ::execvpe(arguments[0], arguments.data(), pointers.data());
    ::_exit(127);
}

ChildProcess::~ChildProcess() {
    terminate();
}

bool ChildProcess::isRunning() {
    if (m_pid > 0 && ::waitpid(m_pid, nullptr, WNOHANG) != 0)
        m_pid = -1;
    return m_pid > 0;
}

void ChildProcess::signal(int number) const {
    if (m_pid > 0)
        ::kill(m_pid, number);
}

std::optional<int> ChildProcess::waitForExit() {
    int status = 0;
    if (m_pid <= 0 || ::waitpid(std::exchange(m_pid, -1), &status, 0) < 0)
        return std::nullopt;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void ChildProcess::terminate(std::chrono::milliseconds patience) {
    signal(SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (isRunning()) {
        if (std::chrono::steady_clock::now() > deadline)
            signal(SIGKILL);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace vantrell::testing
