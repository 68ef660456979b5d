// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace vantrell::bench {

/// A TCP proxy on a loopback port that delivers every byte later, in either direction.
class DelayProxy {
public:
    DelayProxy(int targetPort, std::chrono::milliseconds oneWay);
    ~DelayProxy();
    DelayProxy(const DelayProxy &) = delete;
    DelayProxy &operator=(const DelayProxy &) = delete;

    int port() const { return m_port; }

private:
    void acceptAll();
    void serve(UniqueFd client);

    const int m_targetPort;
    const std::chrono::milliseconds m_oneWay;
    UniqueFd m_listener;
    int m_port = 0;
    std::mutex m_mutex;
    std::vector<std::thread> m_threads;
    std::thread m_acceptor;
};

} // namespace vantrell::bench
