// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"
#include "Platform/Desktop/IdleInhibitor.h"
#include "Platform/Desktop/LogindInhibitor.h"
#include "Platform/SessionMonitor.h"

#include <QDBusConnection>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantrell {

/// Sleep, shutdown and the session's turn as logind (or elogind) tells them on the system bus; idleness by
/// way of whoever blanks the screen on this desktop. Main thread. Silent where neither is there, and heard
/// again when they come.
class LogindSessionMonitor final : public SessionMonitor {
public:
    /// `suspendBlanking` is called besides when the computer shall stay awake, for blanking that no service
    /// does.
    LogindSessionMonitor(QDBusConnection system, QDBusConnection session,
                         std::function<void(bool)> suspendBlanking = {});

    void start(std::function<void(Event)> handler) override;
    void holdSleepBack(bool hold) override { m_sleepLock.hold(hold); }
    void keepAwake(bool awake) override;

private:
    struct Question {
        QString member;
        QVariantList arguments;
    };

    void findSession(std::vector<Question> waysToAsk);
    void askDisplay();
    void watchSession(const QString &path);
    void readActive();
    void setActive(bool active);
    void report(Event event) const;

    std::function<void(Event)> m_handler;
    const std::function<void(bool)> m_suspendBlanking;
    QString m_session;
    std::optional<bool> m_isActive;
    LogindInhibitor m_sleepLock;
    LogindInhibitor m_idleLock;
    std::vector<std::unique_ptr<IdleInhibitor>> m_idle;
    BusClient m_logind;
};

} // namespace vantrell
