// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <functional>
#include <memory>

namespace vantrell {

/// The event loop of one thread, as a place to post work to. Thread-safe; copies name the same loop. Work
/// posted to a thread that has ended is dropped.
class EventLoop {
public:
    /// No loop: what is posted is dropped.
    EventLoop() = default;

    /// The calling thread's loop.
    static EventLoop current();
    /// The loop of the thread that runs the application object.
    static EventLoop main();

    /// Runs `work` on the loop's thread, in the order of posting.
    void post(std::function<void()> work) const;

private:
    class Inbox;
    explicit EventLoop(std::shared_ptr<Inbox> inbox);

    std::shared_ptr<Inbox> m_inbox;
};

} // namespace vantrell
