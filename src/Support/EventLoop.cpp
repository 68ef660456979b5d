// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/EventLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>

#include <deque>
#include <mutex>

namespace vantrell {

/// The work travels through a queue with a mutex of its own, and only a bare event through Qt: the hand-over
/// is then one that the thread sanitizer sees, though Qt itself is not built with it.
class EventLoop::Inbox {
public:
    Inbox() : m_receiver(std::make_unique<Receiver>(*this)) {}

    void post(std::function<void()> work) {
        std::scoped_lock lock(m_mutex);
        if (!m_receiver)
            return;
        m_queue.push_back(std::move(work));
        QCoreApplication::postEvent(m_receiver.get(), new QEvent(QEvent::User));
    }

    void moveToThread(QThread *thread) { m_receiver->moveToThread(thread); }

    /// On the receiver's thread, when it ends.
    void close() {
        std::unique_ptr<Receiver> receiver;
        std::scoped_lock lock(m_mutex);
        receiver = std::move(m_receiver);
        m_queue.clear();
    }

private:
    class Receiver final : public QObject {
    public:
        explicit Receiver(Inbox &inbox) : m_inbox(inbox) {}
        void customEvent(QEvent *) override { m_inbox.runOne(); }

    private:
        Inbox &m_inbox;
    };

    void runOne() {
        std::unique_lock lock(m_mutex);
        if (m_queue.empty())
            return;
        const std::function<void()> work = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        work();
    }

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_queue;
    std::unique_ptr<Receiver> m_receiver;
};

EventLoop::EventLoop(std::shared_ptr<Inbox> inbox) : m_inbox(std::move(inbox)) {}

EventLoop EventLoop::main() {
    static const std::shared_ptr<Inbox> inbox = [] {
        auto made = std::make_shared<Inbox>();
        made->moveToThread(QCoreApplication::instance()->thread());
        return made;
    }();
    return EventLoop(inbox);
}

EventLoop EventLoop::current() {
    if (const QCoreApplication *application = QCoreApplication::instance();
        application && application->thread() == QThread::currentThread())
        return main();
    struct ThreadInbox {
        std::shared_ptr<Inbox> inbox = std::make_shared<Inbox>();
        ~ThreadInbox() { inbox->close(); }
    };
    thread_local const ThreadInbox own;
    return EventLoop(own.inbox);
}

void EventLoop::post(std::function<void()> work) const {
    if (m_inbox)
        m_inbox->post(std::move(work));
}

} // namespace vantrell
