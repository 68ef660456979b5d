// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <vector>

class QDBusServiceWatcher;

namespace vantrell {

class BusSignalReceiver;

/// One service on a bus, as its user sees it: calls whose answers come later, signals, and whether it is
/// there. Never waits for the service. Nothing comes any more once the client is destroyed; declare it behind
/// what its handlers touch. Main thread.
class BusClient {
public:
    /// A bus that is not connected answers each call with an error.
    BusClient(QDBusConnection bus, QString service);
    ~BusClient();
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;

    using Answer = std::expected<QDBusMessage, PlatformError>;
    struct Call {
        QString path;
        QString interface;
        QString member;
        QVariantList arguments;
        /// The bus may start the service for it.
        bool startsService = false;
    };
    void call(const Call &call, std::function<void(const Answer &)> answered = {},
              std::chrono::milliseconds patience = std::chrono::seconds(25));

    /// The signal from an object of the service. The second handler of the same signal replaces none.
    void onSignal(const QString &path, const QString &interface, const QString &member,
                  std::function<void(const QDBusMessage &)> handler);

    /// Told when somebody takes the service's name, and when nobody has it any more; not of how it is now.
    void onPresence(std::function<void(bool isPresent)> handler);

    QDBusConnection bus() const { return m_bus; }

private:
    struct Subscription;

    QDBusConnection m_bus;
    const QString m_service;
    std::vector<std::unique_ptr<Subscription>> m_subscriptions;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    QObject m_receiver;
};

} // namespace vantrell
