// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QPointer>

#include <functional>

class QObject;

namespace vantrell {

/// The event loop of one thread, as a place to post work to. Thread-safe; copies name the same loop. Work
/// posted to a loop that has ended is dropped.
class EventLoop {
public:
    EventLoop() = default;

    /// The calling thread's loop.
    static EventLoop current();
    /// The main thread's loop.
    static EventLoop main();

    void post(std::function<void()> work) const;

private:
    explicit EventLoop(QObject *context);

    QPointer<QObject> m_context;
};

} // namespace vantrell
