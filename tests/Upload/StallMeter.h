// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace vantrell::testing {

/// The longest time for which the calling thread's event loop served nobody, seen by a timer that beats every
/// millisecond. Time in which the thread was ready to run and the machine ran somebody else is not its fault
/// and left out.
class StallMeter : public QObject {
public:
    StallMeter();

    std::chrono::milliseconds longest() const;
    int beats() const { return m_beats; }

private:
    struct Reading {
        std::chrono::nanoseconds wall{};
        /// Spent waiting for a processor since the thread began.
        std::chrono::nanoseconds ready{};
        static Reading now();
    };

    void beat();

    QTimer m_heart;
    Reading m_last;
    std::chrono::nanoseconds m_longest{};
    int m_beats = 0;
};

} // namespace vantrell::testing
