// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/CrashHandler.h"

#include "Support/CrashText.h"
#include "Support/LogTail.h"
#include "Support/ModuleMap.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantrell {

namespace {

// All of it is written before the handler is installed and only read by it.
char crashFolder[4096];
char crashHeading[256];
/// The main thread's: a stack that has overflowed has no room for a handler.
alignas(16) char handlerStack[64 << 10];

constexpr int deepest = 64;
/// A handler that waits for a lock which the crashed thread holds must not keep the process.
constexpr unsigned handlerSeconds = 10;

void writeStack(int file) {
    static void *frames[deepest];
    static ModuleMap modules;
    modules.read();
    const int count = backtrace(frames, deepest);
    for (int i = 0; i < count; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(frames[i]);
        CrashText line;
        line.add("  ");
        modules.describe(address, line);
        line.add("\n");
        line.write(file);
    }
}

void writeReport(int file, int number, const siginfo_t *info) {
    char thread[16] = "";
    pthread_getname_np(pthread_self(), thread, sizeof thread);
    CrashText head;
    head.add(crashHeading).add("\nSignal ").add(std::uint64_t(number)).add(", code ").add(info->si_code);
    head.add(", address 0x").addHex(reinterpret_cast<std::uintptr_t>(info->si_addr));
    head.add(", thread ").add(thread).add("\n\nLog:\n");
    head.write(file);
    // The log first: unwinding a broken stack may be the last that happens.
    LogTail::write(file);
    CrashText("\nStack:\n").write(file);
    writeStack(file);
}

void crashed(int number, siginfo_t *info, void *) {
    ::alarm(handlerSeconds);
    CrashText path;
    path.add(crashFolder).add("/crash-").add(std::uint64_t(std::time(nullptr))).add("-");
    path.add(std::uint64_t(::getpid())).add(".txt");
    ::mkdir(crashFolder, 0700);
    const int file = ::open(path.text(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file >= 0) {
        writeReport(file, number, info);
        ::fsync(file);
        ::close(file);
        CrashText told;
        told.add("Vantrell Capture has crashed. What it was doing is in ").add(path.text()).add("\n");
        told.write(STDERR_FILENO);
    }
    // Its own action is in force again: the process ends with it, and whoever collects cores gets one.
    ::raise(number);
}

} // namespace

void installCrashHandler(const std::filesystem::path &folder, const char *heading) {
    std::strncpy(crashFolder, folder.c_str(), sizeof crashFolder - 1);
    std::strncpy(crashHeading, heading, sizeof crashHeading - 1);
    // The first call loads the unwinder, which allocates.
    void *frame = nullptr;
    backtrace(&frame, 1);
    const stack_t stack{.ss_sp = handlerStack, .ss_flags = 0, .ss_size = sizeof handlerStack};
    ::sigaltstack(&stack, nullptr);
    struct sigaction action{};
    action.sa_sigaction = crashed;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | int(SA_RESETHAND) | SA_NODEFER;
    for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP}) {
        struct sigaction present{};
        // A sanitizer's own handler says more.
        if (::sigaction(number, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
            ::sigaction(number, &action, nullptr);
    }
}

} // namespace vantrell
