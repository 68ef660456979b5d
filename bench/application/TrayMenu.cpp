// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TrayMenu.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <utility>

namespace vantrell::bench {

namespace {

QDBusMessage menuCall(const QString &owner, const char *member, const QVariantList &arguments) {
    QDBusMessage made = QDBusMessage::createMethodCall(
        owner, QStringLiteral("/MenuBar"), QStringLiteral("com.canonical.dbusmenu"), QLatin1String(member));
    made.setArguments(arguments);
    return made;
}

} // namespace

TrayMenu::TrayMenu(QDBusConnection bus, QString owner) : m_bus(std::move(bus)), m_owner(std::move(owner)) {}

std::optional<TrayMenu::Item> TrayMenu::find(const QString &title) {
    m_bus.call(menuCall(m_owner, "AboutToShow", {0}));
    const QDBusMessage answer = m_bus.call(menuCall(m_owner, "GetLayout", {0, -1, QStringList()}));
    return findBelow(answer.arguments().value(1).value<QDBusArgument>(), title);
}

void TrayMenu::click(const Item &item) {
    m_bus.call(menuCall(
        m_owner, "Event",
        {item.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), uint(0)}));
}

std::optional<TrayMenu::Item> TrayMenu::findBelow(const QDBusArgument &layout, const QString &title) const {
    Item item;
    QVariantMap properties;
    layout.beginStructure();
    layout >> item.id >> properties;
    std::optional<Item> found;
    layout.beginArray();
    while (!layout.atEnd()) {
        QDBusVariant child;
        layout >> child;
        if (auto below = findBelow(child.variant().value<QDBusArgument>(), title))
            found = below;
    }
    layout.endArray();
    layout.endStructure();
    item.isChecked = properties.value(QStringLiteral("toggle-state")).toInt() == 1;
    return properties.value(QStringLiteral("label")).toString() == title ? item : found;
}

} // namespace vantrell::bench
