// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/IdleInhibitor.h"

#include "Platform/ApplicationIdentity.h"
#include "Support/Log.h"

#include <QDBusObjectPath>

#include <utility>

namespace vantrell {

namespace {

const QString idleReason = QStringLiteral("Recording the screen");

} // namespace

IdleService IdleService::screenSaver() {
    return {"org.freedesktop.ScreenSaver",
            "/org/freedesktop/ScreenSaver",
            "org.freedesktop.ScreenSaver",
            "Inhibit",
            {QString::fromUtf8(applicationId), idleReason},
            "UnInhibit"};
}

IdleService IdleService::gnomeSession() {
    constexpr uint notIdleAndNoSuspend = 8 | 4;
    return {"org.gnome.SessionManager",
            "/org/gnome/SessionManager",
            "org.gnome.SessionManager",
            "Inhibit",
            {QString::fromUtf8(applicationId), uint(0), idleReason, notIdleAndNoSuspend},
            "Uninhibit"};
}

IdleService IdleService::powerManagement() {
    return {"org.freedesktop.PowerManagement",
            "/org/freedesktop/PowerManagement/Inhibit",
            "org.freedesktop.PowerManagement.Inhibit",
            "Inhibit",
            {QString::fromUtf8(applicationId), idleReason},
            "UnInhibit"};
}

IdleService IdleService::portal() {
    constexpr uint notIdleAndNoSuspend = 8 | 4;
    return {"org.freedesktop.portal.Desktop",
            "/org/freedesktop/portal/desktop",
            "org.freedesktop.portal.Inhibit",
            "Inhibit",
            {QString(), notIdleAndNoSuspend, QVariantMap{{"reason", idleReason}}},
            {}};
}

IdleInhibitor::IdleInhibitor(QDBusConnection bus, IdleService service)
    : m_service(std::move(service)), m_client(std::move(bus), m_service.service) {
    m_client.onPresence([this](bool isPresent) {
        m_cookie.reset();
        m_isStale = m_asking;
        if (isPresent && m_wanted && !m_asking)
            ask();
    });
}

IdleInhibitor::~IdleInhibitor() {
    hold(false);
}

void IdleInhibitor::hold(bool held) {
    if (std::exchange(m_wanted, held) == held || m_asking)
        return;
    if (held)
        ask();
    else if (m_cookie)
        giveBack(*std::exchange(m_cookie, std::nullopt));
}

void IdleInhibitor::ask() {
    m_asking = true;
    m_client.call({m_service.path, m_service.interface, m_service.inhibit, m_service.arguments},
                  [this](const BusClient::Answer &answer) {
                      m_asking = false;
                      if (std::exchange(m_isStale, false)) {
                          if (m_wanted)
                              ask();
                          return;
                      }
                      if (!answer) {
                          qCDebug(logApp, "no idle lock of %s: %s", qPrintable(m_service.service),
                                  answer.error().message.c_str());
                          return;
                      }
                      const QVariant cookie = answer->arguments().value(0);
                      if (m_wanted)
                          m_cookie = cookie;
                      else
                          giveBack(cookie);
                  });
}

void IdleInhibitor::giveBack(const QVariant &cookie) {
    if (m_service.release.isEmpty())
        m_client.call({cookie.value<QDBusObjectPath>().path(), "org.freedesktop.portal.Request", "Close"});
    else
        m_client.call({m_service.path, m_service.interface, m_service.release, {cookie}});
}

} // namespace vantrell
