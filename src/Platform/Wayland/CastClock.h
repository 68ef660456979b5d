// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/HostTime.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace vantrell {

/// Puts a cast's own time stamps on the host clock. Those that are plainly of that clock are taken as they
/// are; those of another one are laid so that the quickest picture seen came without delay; without any the
/// moment of arrival counts. Never goes back. Thread-bound.
class CastClock {
public:
    /// `stamp` in nanoseconds, `arrival` in host seconds.
    double hostTime(std::optional<std::int64_t> stamp, double arrival) {
        double time = arrival;
        if (stamp) {
            const double told = double(*stamp) / 1e9;
            const double lag = arrival - told;
            if (lag >= -tolerance && lag < mostLag) {
                time = std::min(told, arrival);
            } else {
                if (!m_offset || lag < *m_offset || lag > *m_offset + mostLag)
                    m_offset = lag;
                time = told + *m_offset;
            }
        }
        m_last = std::max(m_last, std::min(time, arrival));
        return m_last;
    }

private:
    /// Seconds. A compositor that is late by more has stood still.
    static constexpr double mostLag = 2;
    /// Some stamp the moment at which the picture will be shown.
    static constexpr double tolerance = 0.1;

    std::optional<double> m_offset;
    double m_last = 0;
};

} // namespace vantrell
