// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/SystemClock.h"

namespace vantrell::testing {

/// The machine's clock, whose sleeps are 200 times as short: back-offs of minutes pass in a second.
class HurriedClock final : public Clock {
public:
    WallTime wallNow() const override { return m_clock.wallNow(); }
    double hostNow() const override { return m_clock.hostNow(); }
    Task<std::expected<void, Cancelled>> sleep(std::chrono::milliseconds duration,
                                               std::stop_token stop) override {
        return m_clock.sleep(duration / 200, std::move(stop));
    }

private:
    SystemClock m_clock;
};

} // namespace vantrell::testing
