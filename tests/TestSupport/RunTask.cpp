// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/RunTask.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

namespace vantrell::testing {

bool eventually(const std::function<bool()> &condition, std::chrono::milliseconds patience) {
    QElapsedTimer elapsed;
    elapsed.start();
    // The timer makes the loop look again when the condition changes without an event of its own.
    QTimer heartbeat;
    heartbeat.start(std::chrono::milliseconds(5));
    while (!condition()) {
        if (elapsed.elapsed() > patience.count())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void settle() {
    // Each round runs what was posted before it; work may post more work, a few rounds deep.
    for (int round = 0; round < 20; ++round)
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

} // namespace vantrell::testing
