// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"

#include <QVariant>

#include <optional>

namespace vantrell {

/// Somebody of the desktop who blanks the screen for idleness, and how it is asked to leave that.
struct IdleService {
    QString service;
    QString path;
    QString interface;
    QString inhibit;
    QVariantList arguments;
    /// Empty: what was answered is an object that is closed.
    QString release;

    /// org.freedesktop.ScreenSaver: KDE, GNOME, Cinnamon, MATE and most single screen savers.
    static IdleService screenSaver();
    /// org.gnome.SessionManager.
    static IdleService gnomeSession();
    /// org.freedesktop.PowerManagement: Xfce, LXQt.
    static IdleService powerManagement();
    /// The desktop's portal, the only way out of a sandbox.
    static IdleService portal();
};

/// Asks one such service while it is held; again when the service starts anew. Where it does not run nothing
/// happens. Ends with the program in whatever way. Main thread.
class IdleInhibitor {
public:
    IdleInhibitor(QDBusConnection bus, IdleService service);
    ~IdleInhibitor();

    void hold(bool held);

private:
    void ask();
    void giveBack(const QVariant &cookie);

    const IdleService m_service;
    bool m_wanted = false;
    /// A question is under way; its answer says what is to be given back.
    bool m_asking = false;
    /// Whoever was asked is gone, or another one.
    bool m_isStale = false;
    std::optional<QVariant> m_cookie;
    BusClient m_client;
};

} // namespace vantrell
