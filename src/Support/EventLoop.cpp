// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/EventLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QThread>

namespace vantrell {

EventLoop::EventLoop(QObject *context) : m_context(context) {}

EventLoop EventLoop::current() {
    return EventLoop(QAbstractEventDispatcher::instance());
}

EventLoop EventLoop::main() {
    return EventLoop(QCoreApplication::instance());
}

void EventLoop::post(std::function<void()> work) const {
    if (QObject *context = m_context.data())
        QMetaObject::invokeMethod(context, std::move(work), Qt::QueuedConnection);
}

} // namespace vantrell
