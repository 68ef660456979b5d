// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/DesktopLoader.h"

#include "App/SessionKind.h"
#include "Panels/Sentence.h"
#include "Platform/Desktop/AlwaysGrantedScreenAccess.h"
#include "Platform/Desktop/AutostartLoginItem.h"
#include "Platform/Desktop/DesktopFileOpener.h"
#include "Platform/Desktop/DesktopNotifier.h"
#include "Platform/Desktop/LogindSessionMonitor.h"
#include "Platform/Desktop/PortalColourScheme.h"
#include "Platform/Desktop/PortalHotKeys.h"
#include "Platform/NullHotKeys.h"
#include "Platform/NullNotifier.h"
#include "Platform/NullSessionMonitor.h"
#include "Platform/Wayland/WaylandKeymap.h"
#include "Platform/Wayland/WaylandScreenAccess.h"
#include "Platform/X11/X11HotKeys.h"
#include "Platform/X11/X11ScreenBlanking.h"
#include "Support/Log.h"

#include <QDBusConnection>

#include <map>

namespace vantrell {

namespace {

/// As its users say it; "Linux" where the desktop does not tell.
std::string desktopName() {
    const std::string desktops = qgetenv("XDG_CURRENT_DESKTOP").toStdString();
    // "ubuntu:GNOME": the last is the most general.
    const std::string name = desktops.substr(desktops.rfind(':') + 1);
    static const std::map<std::string, std::string> spellings{{"KDE", "KDE Plasma"}, {"XFCE", "Xfce"}};
    const auto spelling = spellings.find(name);
    return name.empty() ? "Linux" : spelling == spellings.end() ? name : spelling->second;
}

/// What the desktop's settings call them.
std::unique_ptr<HotKeyBackend> portalHotKeys(const QDBusConnection &bus) {
    using Key = HotKeyBackend::Key;
    const std::string desktops = qgetenv("XDG_CURRENT_DESKTOP").toStdString();
    return std::make_unique<PortalHotKeys>(
        bus, PortalHotKeys::Options{{{Key::digit7, QStringLiteral("capture-area"),
                                      inUsersLanguage(QStringLiteral("Capture Area"))},
                                     {Key::digit8, QStringLiteral("capture-window"),
                                      inUsersLanguage(QStringLiteral("Capture Window"))},
                                     {Key::digit9, QStringLiteral("toggle-recording"),
                                      inUsersLanguage(QStringLiteral("Start or Stop Recording"))}},
                                    desktops.substr(desktops.rfind(':') + 1),
                                    shiftedSymbol});
}

std::unique_ptr<HotKeyBackend> loadHotKeys(SessionKind session, const QDBusConnection &bus) {
    if (session == SessionKind::wayland)
        return portalHotKeys(bus);
    if (session == SessionKind::none)
        return std::make_unique<NullHotKeys>(
            PlatformError{"session", 0, "There is no desktop to hear hot keys"});
    auto hotKeys = X11HotKeys::create();
    if (hotKeys)
        return std::move(*hotKeys);
    return std::make_unique<NullHotKeys>(hotKeys.error());
}

std::unique_ptr<SessionMonitor> loadSessionMonitor(SessionKind session, const QDBusConnection &sessionBus) {
    const QDBusConnection system = QDBusConnection::systemBus();
    std::function<void(bool)> suspendBlanking;
    if (session == SessionKind::x11)
        suspendBlanking = [blanking = std::make_shared<X11ScreenBlanking>()](bool awake) {
            blanking->suspend(awake);
        };
    if (!system.isConnected() && !sessionBus.isConnected() && !suspendBlanking)
        return std::make_unique<NullSessionMonitor>();
    return std::make_unique<LogindSessionMonitor>(system, sessionBus, suspendBlanking);
}

} // namespace

DesktopServices loadDesktopServices() {
    const SessionKind session = sessionKind();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        qCInfo(logApp, "no session bus: no notifications");
    DesktopServices services;
    services.hotKeys = loadHotKeys(session, bus);
    services.session = loadSessionMonitor(session, bus);
    if (bus.isConnected())
        services.notifications = std::make_unique<DesktopNotifier>(bus);
    else
        services.notifications = std::make_unique<NullNotifier>();
    services.loginItem = std::make_unique<AutostartLoginItem>(AutostartLoginItem::Options::fromEnvironment());
    if (session == SessionKind::wayland)
        services.screenAccess = std::make_unique<WaylandScreenAccess>(bus, desktopName());
    else
        services.screenAccess = std::make_unique<AlwaysGrantedScreenAccess>(desktopName());
    // Elsewhere the panels look at the screen behind them.
    if (session == SessionKind::wayland)
        services.colours = std::make_unique<PortalColourScheme>(bus);
    else
        services.colours = std::make_unique<ColourScheme>();
    services.files = std::make_unique<DesktopFileOpener>(bus);
    return services;
}

} // namespace vantrell
