// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Clock.h"

namespace vantrell {

/// The machine's own clocks.
class SystemClock final : public Clock {
public:
    WallTime wallNow() const override;
    double hostNow() const override;
    Task<std::expected<void, Cancelled>> sleep(std::chrono::milliseconds duration,
                                               std::stop_token stop) override;
};

} // namespace vantrell
