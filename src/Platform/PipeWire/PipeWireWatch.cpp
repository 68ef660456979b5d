// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireWatch.h"

#include "Support/EventLoop.h"

#include <optional>
#include <utility>

namespace vantrell {

PipeWireWatch::PipeWireWatch(std::function<void()> lost)
    : m_lost(std::make_shared<std::function<void()>>(std::move(lost))) {
    const EventLoop home = EventLoop::current();
    const PipeWireLoop::Lock lock(m_loop);
    auto opened = PipeWireConnection::open(m_loop, std::nullopt, [home, told = std::weak_ptr(m_lost)] {
        home.post([told] {
            if (const auto lostNow = told.lock())
                (*lostNow)();
        });
    });
    if (opened)
        m_connection = std::move(*opened);
}

PipeWireWatch::~PipeWireWatch() {
    const PipeWireLoop::Lock lock(m_loop);
    m_connection.reset();
}

} // namespace vantrell
