// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/SystemClock.h"

#include "Support/OneShot.h"

#include <QTimer>

#include <ctime>

namespace vantrell {

Clock::WallTime SystemClock::wallNow() const {
    return std::chrono::system_clock::now();
}

double SystemClock::hostNow() const {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

Task<std::expected<void, Cancelled>> SystemClock::sleep(std::chrono::milliseconds duration,
                                                        std::stop_token stop) {
    const OneShot<bool> elapsed;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [elapsed] { elapsed.resolve(true); });
    timer.start(duration);
    const auto outcome = co_await elapsed.wait(stop);
    if (!outcome)
        co_return std::unexpected(Cancelled{});
    co_return std::expected<void, Cancelled>();
}

} // namespace vantrell
