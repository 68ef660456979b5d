// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Bus/BusClient.h"

#include "Platform/Bus/BusSignalReceiver.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QTimer>

#include <utility>

namespace vantrell {

struct BusClient::Subscription {
    QDBusConnection bus;
    QString service, path, interface, member;
    BusSignalReceiver *receiver;

    Subscription(QDBusConnection onBus, QString ofService, QString ofPath, QString ofInterface,
                 QString signal, std::function<void(const QDBusMessage &)> handler)
        : bus(std::move(onBus)), service(std::move(ofService)), path(std::move(ofPath)),
          interface(std::move(ofInterface)), member(std::move(signal)),
          receiver(new BusSignalReceiver(std::move(handler))) {
        bus.connect(service, path, interface, member, receiver, SLOT(receive(QDBusMessage)));
    }
    ~Subscription() {
        bus.disconnect(service, path, interface, member, receiver, SLOT(receive(QDBusMessage)));
        receiver->stop();
        // It may be calling right now.
        receiver->deleteLater();
    }
    Subscription(const Subscription &) = delete;
    Subscription &operator=(const Subscription &) = delete;
};

BusClient::BusClient(QDBusConnection bus, QString service)
    : m_bus(std::move(bus)), m_service(std::move(service)) {}

BusClient::~BusClient() = default;

void BusClient::call(const Call &call, std::function<void(const Answer &)> answered,
                     std::chrono::milliseconds patience) {
    if (!m_bus.isConnected()) {
        // A pending call's watcher never says so.
        QTimer::singleShot(0, &m_receiver, [done = std::move(answered)] {
            if (done)
                done(
                    std::unexpected(PlatformError{"dbus", int(QDBusError::Disconnected), "there is no bus"}));
        });
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, call.path, call.interface, call.member);
    message.setArguments(call.arguments);
    message.setAutoStartService(call.startsService);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, int(patience.count())), &m_receiver);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_receiver,
                     [watcher, done = std::move(answered)] {
                         watcher->deleteLater();
                         if (!done)
                             return;
                         if (watcher->isError())
                             done(std::unexpected(PlatformError{"dbus", int(watcher->error().type()),
                                                                watcher->error().message().toStdString()}));
                         else
                             done(watcher->reply());
                     });
}

void BusClient::onSignal(const QString &path, const QString &interface, const QString &member,
                         std::function<void(const QDBusMessage &)> handler) {
    m_subscriptions.push_back(
        std::make_unique<Subscription>(m_bus, m_service, path, interface, member, std::move(handler)));
}

void BusClient::onPresence(std::function<void(bool)> handler) {
    m_watcher =
        std::make_unique<QDBusServiceWatcher>(m_service, m_bus, QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, &m_receiver,
                     [told = std::move(handler)](const QString &, const QString &, const QString &owner) {
                         told(!owner.isEmpty());
                     });
}

} // namespace vantrell
