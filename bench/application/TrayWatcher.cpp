// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TrayWatcher.h"

#include "Support/HostTime.h"

#include <QDBusMessage>
#include <QDBusVariant>

namespace vantrell::bench {

TrayWatcher::TrayWatcher(QDBusConnection bus) : m_bus(std::move(bus)) {
    m_bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
    m_bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
}

QString TrayWatcher::introspect(const QString &) const {
    return QStringLiteral(R"(<interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
</interface>)");
}

bool TrayWatcher::handleMessage(const QDBusMessage &message, const QDBusConnection &) {
    if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
        m_iconAt = hostNow();
        m_owner = message.service();
        return m_bus.send(message.createReply());
    }
    // All that is asked for: whether somebody shows icons.
    if (message.member() == QLatin1String("Get"))
        return m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    if (message.member() == QLatin1String("GetAll"))
        return m_bus.send(
            message.createReply(QVariantMap{{QStringLiteral("IsStatusNotifierHostRegistered"), true}}));
    return false;
}

} // namespace vantrell::bench
