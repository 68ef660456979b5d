// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/TrayHost.h"

#include "Platform/X11/X11SelectionWatcher.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

namespace vantrell {

namespace {

QString watcherName() {
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

} // namespace

struct TrayHost::Watchers {
    QDBusServiceWatcher bus{watcherName(), QDBusConnection::sessionBus(),
                            QDBusServiceWatcher::WatchForOwnerChange};
    std::unique_ptr<X11SelectionWatcher> display;
};

TrayHost::TrayHost() : m_watchers(std::make_unique<Watchers>()) {
    QObject::connect(&m_watchers->bus, &QDBusServiceWatcher::serviceOwnerChanged, &m_watchers->bus,
                     [this](const QString &, const QString &, const QString &) { look(); });
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        m_watchers->display = std::make_unique<X11SelectionWatcher>("_NET_SYSTEM_TRAY_S", [this] {
            m_isOnDisplay = m_watchers->display->isOwned();
            if (onChange)
                onChange();
        });
        m_isOnDisplay = m_watchers->display->isOwned();
    }
    look();
}

TrayHost::~TrayHost() = default;

std::optional<std::string> TrayHost::kind() const {
    if (m_isOnBus)
        return "StatusNotifierItem";
    return m_isOnDisplay ? std::optional<std::string>("XEmbed") : std::nullopt;
}

void TrayHost::look() {
    // A watcher without a host keeps icons that nobody shows.
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName(), QStringLiteral("/StatusNotifierWatcher"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherName() << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto *const call =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), &m_watchers->bus);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, &m_watchers->bus, [this, call] {
        const QDBusPendingReply<QDBusVariant> answer = *call;
        call->deleteLater();
        const bool isThere = answer.isValid() && answer.value().variant().toBool();
        if (std::exchange(m_isOnBus, isThere) != isThere && onChange)
            onChange();
    });
}

} // namespace vantrell
