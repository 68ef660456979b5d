// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"

#include <QDBusConnection>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <list>

namespace vantrell {

/// Feels, while the portals owe an answer, whether the desktop's own part behind them lives: they wait for
/// one that hangs as for one that is slow, or whose user is. Parts that come up meanwhile are not felt, nor
/// any out of a sandbox. Main thread.
class PortalPulse {
public:
    /// `hung` is called when all the parts that serve the portal ("ScreenCast") have given no sign of life
    /// for about three seconds.
    PortalPulse(QDBusConnection bus, QString portal, std::function<void()> hung);
    ~PortalPulse();
    PortalPulse(const PortalPulse &) = delete;
    PortalPulse &operator=(const PortalPulse &) = delete;

private:
    struct Part {
        Part(const QDBusConnection &bus, QString service);
        void ask();
        bool isSilent() const;

        const QString name;
        bool owesAnswer = false;
        /// How often it has been looked at in vain.
        int silences = 0;
        BusClient client;
    };

    void take(const QStringList &names);
    void look();
    bool isHung() const;

    const QString m_portal;
    const std::function<void()> m_hung;
    std::list<Part> m_parts;
    QTimer m_looking;
    BusClient m_bus;
};

} // namespace vantrell
