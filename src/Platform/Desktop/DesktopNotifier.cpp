// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/DesktopNotifier.h"

#include "Platform/ApplicationIdentity.h"
#include "Support/Log.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

const QString notificationsPath = QStringLiteral("/org/freedesktop/Notifications");
const QString notificationsName = QStringLiteral("org.freedesktop.Notifications");

} // namespace

DesktopNotifier::DesktopNotifier(QDBusConnection session) : m_client(std::move(session), notificationsName) {
    m_client.onSignal(notificationsPath, notificationsName, QStringLiteral("ActionInvoked"),
                      [this](const QDBusMessage &message) {
                          acted(message.arguments().value(0).toUInt(),
                                message.arguments().value(1).toString().toStdString());
                      });
    m_client.onSignal(notificationsPath, notificationsName, QStringLiteral("NotificationClosed"),
                      [this](const QDBusMessage &message) {
                          if (const auto found = find(message.arguments().value(0).toUInt());
                              found != m_shown.end())
                              m_shown.erase(found);
                      });
    m_client.onPresence([this](bool isPresent) {
        ++m_daemon;
        m_hasActions = false;
        std::erase_if(m_shown, [](const auto &entry) { return !entry.second.notification.stays; });
        for (auto &[id, shown] : m_shown)
            shown.number = 0;
        if (isPresent)
            askCapabilities();
    });
    askCapabilities();
}

DesktopNotifier::~DesktopNotifier() {
    for (const auto &[id, shown] : m_shown) {
        if (shown.notification.stays && shown.number != 0)
            close(shown.number);
    }
}

void DesktopNotifier::askCapabilities() {
    m_client.call({notificationsPath, notificationsName, "GetCapabilities", {}, true},
                  [this, daemon = m_daemon](const BusClient::Answer &answer) {
                      if (daemon != m_daemon)
                          return;
                      if (!answer) {
                          qCInfo(logApp, "no notifications: %s", answer.error().message.c_str());
                          return;
                      }
                      const QStringList can = answer->arguments().value(0).toStringList();
                      m_hasActions = can.contains(QStringLiteral("actions"));
                      m_understandsMarkup = can.contains(QStringLiteral("body-markup"));
                      // What waited for a daemon.
                      for (const auto &[id, shown] : m_shown) {
                          if (shown.number == 0)
                              send(id);
                      }
                  });
}

Notifier::Id DesktopNotifier::show(Notification notification,
                                   std::function<void(const std::string &key)> onAction) {
    const Id id = ++m_lastId;
    const bool stays = notification.stays;
    m_shown.emplace(id, Shown{std::move(notification), std::move(onAction)});
    if (m_hasActions)
        send(id);
    else if (!stays)
        m_shown.erase(id);
    return id;
}

void DesktopNotifier::send(Id id) {
    const Notification &notification = m_shown.at(id).notification;
    QStringList actions;
    for (const Action &action : notification.actions)
        actions << QString::fromStdString(action.key) << QString::fromStdString(action.label);
    QVariantMap hints{{"desktop-entry", QString::fromUtf8(applicationId)}};
    // Else one of its actions would take it away.
    if (notification.stays)
        hints.insert("resident", true);
    constexpr unsigned char low = 0;
    if (notification.isQuiet)
        hints.insert("urgency", QVariant::fromValue(low));
    const QString body = QString::fromStdString(notification.body);
    constexpr int asLongAsTheDaemonLikes = -1;
    constexpr int never = 0;
    m_client.call(
        {notificationsPath,
         notificationsName,
         "Notify",
         {QString::fromUtf8(applicationName), uint(0), QString::fromUtf8(applicationId),
          QString::fromStdString(notification.title), m_understandsMarkup ? body.toHtmlEscaped() : body,
          actions, hints, notification.stays ? never : asLongAsTheDaemonLikes}},
        [this, id, daemon = m_daemon](const BusClient::Answer &answer) {
            if (daemon != m_daemon)
                return;
            const auto found = m_shown.find(id);
            if (!answer) {
                qCInfo(logApp, "notification failed: %s", answer.error().message.c_str());
                if (found != m_shown.end())
                    m_shown.erase(found);
                return;
            }
            const std::uint32_t number = answer->arguments().value(0).toUInt();
            if (found != m_shown.end())
                found->second.number = number;
            else
                close(number);
        });
}

void DesktopNotifier::withdraw(Id id) {
    const auto found = m_shown.find(id);
    if (found == m_shown.end())
        return;
    const std::uint32_t number = found->second.number;
    m_shown.erase(found);
    // Without a number yet the answer will find nobody who wants it.
    if (number != 0)
        close(number);
}

void DesktopNotifier::close(std::uint32_t number) {
    m_client.call({notificationsPath, notificationsName, "CloseNotification", {number}});
}

std::map<Notifier::Id, DesktopNotifier::Shown>::iterator DesktopNotifier::find(std::uint32_t number) {
    return number == 0 ? m_shown.end() : std::ranges::find_if(m_shown, [number](const auto &entry) {
        return entry.second.number == number;
    });
}

void DesktopNotifier::acted(std::uint32_t number, const std::string &key) {
    const auto found = find(number);
    if (found == m_shown.end())
        return;
    // A copy: it may withdraw the notification.
    if (const auto onAction = found->second.onAction)
        onAction(key);
}

} // namespace vantrell
