// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/BusQuestion.h"

#include "Support/OneShot.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

namespace vantrell {

Task<BusAnswer> askBus(BusQuestion question, std::stop_token stop) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(question.service, question.path, question.interface, question.member);
    message.setArguments(question.arguments);
    message.setAutoStartService(question.startsService);
    QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(message));
    const OneShot<QDBusMessage> answered;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &watcher,
                     [answered, &watcher] { answered.resolve(watcher.reply()); });
    const auto answer = co_await answered.wait(stop);
    if (!answer)
        co_return std::unexpected(PlatformError{"dbus", 0, "It did not answer in time"});
    if (answer->type() == QDBusMessage::ErrorMessage)
        co_return std::unexpected(PlatformError{"dbus", 1, answer->errorMessage().toStdString()});
    co_return answer->arguments();
}

Task<std::expected<QVariant, PlatformError>> askProperty(QString service, QString path, QString interface,
                                                         QString property, bool startsService,
                                                         std::stop_token stop) {
    const BusQuestion question{service,
                               path,
                               QStringLiteral("org.freedesktop.DBus.Properties"),
                               QStringLiteral("Get"),
                               {interface, property},
                               startsService};
    const BusAnswer answer = co_await askBus(question, stop);
    if (!answer)
        co_return std::unexpected(answer.error());
    co_return answer->value(0).value<QDBusVariant>().variant();
}

Task<bool> isOnBus(QString service, std::stop_token stop) {
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    const BusQuestion question{
        bus, QStringLiteral("/org/freedesktop/DBus"), bus, QStringLiteral("NameHasOwner"), {service}};
    const BusAnswer answer = co_await askBus(question, stop);
    co_return answer && answer->value(0).toBool();
}

} // namespace vantrell
