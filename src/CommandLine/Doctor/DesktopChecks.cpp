// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/BusQuestion.h"
#include "CommandLine/Doctor/Checks.h"

#include <QDBusObjectPath>

namespace vantrell {

namespace {

constexpr const char *noBusAdvice =
    "Start the desktop with a session bus (dbus-user-session), or this shell with dbus-run-session";

/// Without a bus there is one line about that, in its own place, and none about each service.
bool lacksBus(const Surroundings &around) {
    return !around.hasBus;
}

} // namespace

Task<Findings> checkPortals(const Surroundings &around, std::stop_token stop) {
    if (lacksBus(around))
        co_return Findings{
            problemFinding("Session bus", "there is none, or it does not answer", noBusAdvice)};
    const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    std::string found;
    bool canCast = false;
    std::string reason;
    for (const char *const name : {"ScreenCast", "Screenshot", "GlobalShortcuts", "Camera"}) {
        const auto version = co_await askProperty(
            service, path, QStringLiteral("org.freedesktop.portal.") + QLatin1String(name),
            QStringLiteral("version"), true, stop);
        if (!version) {
            reason = version.error().message;
            continue;
        }
        canCast = canCast || std::string_view(name) == "ScreenCast";
        found += (found.empty() ? "" : ", ") + std::string(name) + ' ' + std::to_string(version->toUInt());
    }
    const std::string install = "Install xdg-desktop-portal and the backend of your desktop "
                                "(xdg-desktop-portal-gnome, -kde, -wlr, -gtk), "
                                "then log in again";
    if (canCast)
        co_return Findings{okFinding("Portals", found)};
    // X11 is recorded without them.
    const std::string text = found.empty() ? "none" : found + ", but none for screens";
    if (around.isWayland)
        co_return Findings{problemFinding("Portals", text, install)};
    co_return Findings{okFinding("Portals", text + "; not needed on X11")};
}

Task<Findings> checkTray(const Surroundings &around, std::stop_token stop) {
    if (around.hasBus) {
        const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
        const auto hosted =
            co_await askProperty(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher,
                                 QStringLiteral("IsStatusNotifierHostRegistered"), false, stop);
        if (hosted && hosted->toBool())
            co_return Findings{okFinding("Tray", "StatusNotifierItem")};
    }
    if (around.display && around.display->hasTray)
        co_return Findings{okFinding("Tray", "XEmbed")};
    co_return Findings{adviceFinding("Tray", "none",
                                     "The hot keys, the capture bar's menu and the commands do the same. For "
                                     "an icon add a tray to your panel "
                                     "(on GNOME the extension AppIndicator)")};
}

Task<Findings> checkNotifications(const Surroundings &around, std::stop_token stop) {
    if (lacksBus(around))
        co_return Findings{};
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    const BusQuestion question{service, QStringLiteral("/org/freedesktop/Notifications"),
                               service, QStringLiteral("GetServerInformation"),
                               {},      true};
    const BusAnswer answer = co_await askBus(question, stop);
    if (!answer)
        co_return Findings{adviceFinding("Notifications", "nobody shows any: " + answer.error().message,
                                         "Start a notification daemon (dunst, mako, or your desktop's own)")};
    co_return Findings{okFinding("Notifications", answer->value(0).toString().toStdString() + ' ' +
                                                      answer->value(2).toString().toStdString())};
}

Task<Findings> checkKeyring(const Surroundings &around, std::stop_token stop) {
    if (around.environmentKey)
        co_return Findings{okFinding("Keyring", "not needed: the key comes from VANTRELL_API_KEY")};
    if (lacksBus(around))
        co_return Findings{problemFinding("Keyring", "out of reach without a session bus",
                                          "Mend the session bus, or give the key in VANTRELL_API_KEY")};
    const QString service = QStringLiteral("org.freedesktop.secrets");
    const BusQuestion question{service,
                               QStringLiteral("/org/freedesktop/secrets"),
                               QStringLiteral("org.freedesktop.Secret.Service"),
                               QStringLiteral("ReadAlias"),
                               {QStringLiteral("default")},
                               true};
    const BusAnswer answer = co_await askBus(question, stop);
    if (!answer)
        co_return Findings{problemFinding("Keyring", "none: " + answer.error().message,
                                          "Install and start gnome-keyring, KWallet or KeePassXC with its "
                                          "Secret Service, or give the key in "
                                          "VANTRELL_API_KEY")};
    const QString collection = answer->value(0).value<QDBusObjectPath>().path();
    if (collection == QLatin1String("/"))
        co_return Findings{adviceFinding("Keyring", "there, but without a default collection",
                                         "Connecting makes one and asks for its password")};
    const auto locked =
        co_await askProperty(service, collection, QStringLiteral("org.freedesktop.Secret.Collection"),
                             QStringLiteral("Locked"), false, stop);
    if (locked && locked->toBool())
        co_return Findings{adviceFinding("Keyring", "locked",
                                         "Unlock it: log in with its password, or connect "
                                         "and enter it")};
    co_return Findings{okFinding("Keyring", "open")};
}

} // namespace vantrell
