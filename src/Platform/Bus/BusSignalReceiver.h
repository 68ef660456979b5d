// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <utility>

namespace vantrell {

/// The slot that the bus delivers one signal to.
class BusSignalReceiver final : public QObject {
    Q_OBJECT

public:
    explicit BusSignalReceiver(std::function<void(const QDBusMessage &)> handler)
        : m_handler(std::move(handler)) {}

    /// Nothing is handled any more, not even what is on its way.
    void stop() { m_handler = nullptr; }

public Q_SLOTS:
    void receive(const QDBusMessage &message) {
        // A copy: it may destroy this object.
        if (const auto handler = m_handler)
            handler(message);
    }

private:
    std::function<void(const QDBusMessage &)> m_handler;
};

} // namespace vantrell
