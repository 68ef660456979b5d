// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/ManualClock.h"

#include "TestSupport/RunTask.h"

#include <algorithm>

namespace vantrell::testing {

Task<std::expected<void, Cancelled>> ManualClock::sleep(std::chrono::milliseconds duration,
                                                        std::stop_token stop) {
    const Sleeper sleeper{m_nextId++, m_host + double(duration.count()) / 1000, duration, {}};
    m_requested.push_back(duration);
    m_sleepers.push_back(sleeper);
    const auto woken = co_await sleeper.woken.wait(stop);
    std::erase_if(m_sleepers, [&sleeper](const Sleeper &other) { return other.id == sleeper.id; });
    if (!woken)
        co_return std::unexpected(Cancelled{});
    co_return std::expected<void, Cancelled>();
}

void ManualClock::advance(std::chrono::milliseconds duration) {
    m_wall += duration;
    wakeUntil(m_host + double(duration.count()) / 1000);
}

std::optional<std::chrono::milliseconds>
ManualClock::advanceToNextSleeper(std::chrono::milliseconds patience) {
    if (!eventually([this] { return !m_sleepers.empty(); }, patience))
        return std::nullopt;
    const auto next = std::ranges::min_element(m_sleepers, {}, &Sleeper::due);
    const std::chrono::milliseconds asked = next->duration;
    const double due = std::max(next->due, m_host);
    m_wall += std::chrono::milliseconds(std::int64_t((due - m_host) * 1000));
    wakeUntil(due);
    return asked;
}

void ManualClock::wakeUntil(double host) {
    for (;;) {
        const auto next = std::ranges::min_element(m_sleepers, {}, &Sleeper::due);
        if (next == m_sleepers.end() || next->due > host + 1e-9)
            break;
        m_host = std::max(m_host, next->due);
        const int id = next->id;
        next->woken.resolve(true);
        eventually([this, id] {
            return std::ranges::none_of(m_sleepers, [id](const Sleeper &s) { return s.id == id; });
        });
    }
    m_host = host;
    settle();
}

} // namespace vantrell::testing
