// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireWatch.h"

#include "Support/EventLoop.h"

#include <chrono>
#include <optional>
#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds lookInterval(1);
constexpr int mostSilences = 3;

} // namespace

PipeWireWatch::PipeWireWatch(std::function<void()> lost)
    : m_lost(std::make_shared<std::function<void()>>(std::move(lost))) {
    const EventLoop home = EventLoop::current();
    {
        const PipeWireLoop::Lock lock(m_loop);
        auto opened = PipeWireConnection::open(m_loop, std::nullopt, [home, told = std::weak_ptr(m_lost)] {
            home.post([told] {
                if (const auto lostNow = told.lock())
                    tell(lostNow);
            });
        });
        if (!opened)
            return;
        m_connection = std::move(*opened);
    }
    QObject::connect(&m_looking, &QTimer::timeout, &m_looking, [this] { look(); });
    m_looking.start(lookInterval);
    look();
}

void PipeWireWatch::look() {
    if (m_isAnswered.exchange(false)) {
        m_silences = 0;
        const PipeWireLoop::Lock lock(m_loop);
        m_connection->whenAnswered([this] { m_isAnswered = true; });
    } else if (++m_silences == mostSilences) {
        m_looking.stop();
        tell(m_lost);
    }
}

/// A copy: it may destroy the watch.
void PipeWireWatch::tell(std::shared_ptr<std::function<void()>> lost) {
    if (const auto told = std::exchange(*lost, nullptr))
        told();
}

PipeWireWatch::~PipeWireWatch() {
    const PipeWireLoop::Lock lock(m_loop);
    m_connection.reset();
}

} // namespace vantrell
