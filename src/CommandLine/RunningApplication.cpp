// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/RunningApplication.h"

#include "Session/ApplicationBus.h"
#include "Support/OneShot.h"
#include "Support/SystemClock.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>

#include <climits>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr int startPolls = 100;

QString busName() {
    return QString::fromLatin1(applicationBus::name);
}

Task<std::expected<QDBusMessage, Cancelled>> ask(std::string method, QVariantList arguments,
                                                 std::string interface, std::stop_token stop) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(busName(), QString::fromLatin1(applicationBus::path),
                                       QString::fromStdString(interface), QString::fromStdString(method));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(message, INT_MAX));
    const OneShot<QDBusMessage> answered;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &watcher,
                     [answered, &watcher] { answered.resolve(watcher.reply()); });
    co_return co_await answered.wait(stop);
}

bool isGone(const QDBusMessage &answer) {
    // Of this one the library makes "other".
    if (answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
        return true;
    const QDBusError::ErrorType type = QDBusError(answer).type();
    return type == QDBusError::NoReply || type == QDBusError::ServiceUnknown ||
           type == QDBusError::Disconnected;
}

} // namespace

bool RunningApplication::isThere() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    const QDBusReply<bool> reply = bus.interface()->isServiceRegistered(busName());
    return reply.isValid() && reply.value();
}

Task<bool> RunningApplication::arrival(std::stop_token stop) {
    const OneShot<bool> arrived;
    const QDBusServiceWatcher watcher(busName(), QDBusConnection::sessionBus(),
                                      QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &watcher,
                     [arrived] { arrived.resolve(true); });
    co_return (co_await arrived.wait(stop)).has_value();
}

Task<RunningApplication::Answer> RunningApplication::call(std::string method, QVariantList arguments,
                                                          std::stop_token stop, std::string interface) {
    SystemClock clock;
    for (int poll = 0;; ++poll) {
        const auto answer = co_await ask(method, arguments, interface, stop);
        if (!answer)
            co_return std::unexpected(CallError{"Interrupted", false, false});
        if (answer->type() != QDBusMessage::ErrorMessage)
            co_return answer->arguments();
        const bool isStarting = answer->errorName() == QLatin1String(applicationBus::starting);
        if (isStarting && poll < startPolls && co_await clock.sleep(100ms, stop))
            continue;
        co_return std::unexpected(CallError{
            isGone(*answer) ? "Vantrell Capture is not running" : answer->errorMessage().toStdString(),
            answer->errorName() == QLatin1String(applicationBus::notConnected), isGone(*answer)});
    }
}

Task<std::expected<RunningApplication::Uploaded, RunningApplication::CallError>>
RunningApplication::awaitUpload(std::string id, std::stop_token stop) {
    QVariantList arguments;
    arguments.append(QString::fromStdString(id));
    const Answer answer = co_await call("AwaitUpload", arguments, stop);
    if (!answer)
        co_return std::unexpected(answer.error());
    const auto text = [&answer](int index) { return answer->value(index).toString().toStdString(); };
    Uploaded uploaded{text(0), text(1), text(2)};
    if (const std::string why = text(3); !why.empty())
        uploaded.assetId = std::unexpected(why);
    co_return uploaded;
}

} // namespace vantrell
