// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/StillPermission.h"

#include "Platform/ApplicationIdentity.h"
#include "Platform/Bus/BusClient.h"
#include "Support/OneShot.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QMap>
#include <QStringList>

#include <chrono>
#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds storePatience{3};

bool forbids(const BusClient::Answer &answer) {
    // Nobody was asked: the store has no entry, which it says with an error of its own. One that cannot be
    // read, as out of a sandbox, may hold anything.
    if (!answer)
        return answer.error().code != int(QDBusError::Other);
    const QVariantList arguments = answer->arguments();
    if (arguments.isEmpty())
        return true;
    const auto kept = qdbus_cast<QMap<QString, QStringList>>(arguments.front());
    // The portals know programs outside of a sandbox by no name, or by that of their desktop entry.
    for (const QString &name : {QString(), QString::fromLatin1(applicationId)})
        if (kept.value(name).contains(QStringLiteral("no")))
            return true;
    return false;
}

} // namespace

Task<bool> mayBeForbiddenStills(QDBusConnection bus, std::stop_token stop) {
    BusClient store(std::move(bus), QStringLiteral("org.freedesktop.impl.portal.PermissionStore"));
    const OneShot<bool> answered;
    // Table and entry have the same name.
    const QString stills = QStringLiteral("screenshot");
    store.call(
        {QStringLiteral("/org/freedesktop/impl/portal/PermissionStore"),
         QStringLiteral("org.freedesktop.impl.portal.PermissionStore"),
         QStringLiteral("Lookup"),
         {stills, stills},
         true},
        [answered](const BusClient::Answer &answer) { answered.resolve(forbids(answer)); }, storePatience);
    const auto forbidden = co_await answered.wait(stop);
    co_return !forbidden || *forbidden;
}

} // namespace vantrell
