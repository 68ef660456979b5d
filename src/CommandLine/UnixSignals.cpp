// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/UnixSignals.h"

#include <QSocketNotifier>

#include <csignal>

#include <sys/signalfd.h>

namespace vantrell {

namespace {

sigset_t setOf(std::initializer_list<int> signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    return set;
}

} // namespace

void UnixSignals::block(std::initializer_list<int> signals) {
    const sigset_t set = setOf(signals);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

UnixSignals::UnixSignals(std::initializer_list<int> signals, std::function<void(int)> handler) {
    block(signals);
    const sigset_t set = setOf(signals);
    m_fd.reset(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    m_notifier = std::make_unique<QSocketNotifier>(m_fd.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this, handler = std::move(handler)] {
                         signalfd_siginfo info{};
                         while (::read(m_fd.get(), &info, sizeof info) == ssize_t(sizeof info))
                             handler(int(info.ssi_signo));
                     });
}

UnixSignals::~UnixSignals() = default;

} // namespace vantrell
