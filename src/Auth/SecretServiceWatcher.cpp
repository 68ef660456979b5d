// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/SecretServiceWatcher.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

using namespace std::chrono_literals;

namespace vantrell {

SecretServiceWatcher::SecretServiceWatcher(std::function<void()> onChange) {
    m_settled.setSingleShot(true);
    // A service that has just taken its name is often unlocked a moment later.
    m_settled.setInterval(100ms);
    QObject::connect(&m_settled, &QTimer::timeout, &m_settled, std::move(onChange));

    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    m_service = std::make_unique<QDBusServiceWatcher>(QStringLiteral("org.freedesktop.secrets"), bus,
                                                      QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(m_service.get(), &QDBusServiceWatcher::serviceRegistered, &m_settled,
                     [this] { m_settled.start(); });
    // No service name: with one, the connection would ask for its owner first.
    bus.connect(QString(), QStringLiteral("/org/freedesktop/secrets"),
                QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("CollectionChanged"),
                &m_settled, SLOT(start()));
}

SecretServiceWatcher::~SecretServiceWatcher() = default;

} // namespace vantrell
