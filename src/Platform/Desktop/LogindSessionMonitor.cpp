// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/LogindSessionMonitor.h"

#include "Support/Sandbox.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <unistd.h>
#include <utility>

namespace vantrell {

namespace {

const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString activeProperty = QStringLiteral("Active");

} // namespace

LogindSessionMonitor::LogindSessionMonitor(QDBusConnection system, QDBusConnection session,
                                           std::function<void(bool)> suspendBlanking)
    : m_suspendBlanking(std::move(suspendBlanking)),
      m_sleepLock(m_logind, QStringLiteral("sleep:shutdown"), QStringLiteral("delay"),
                  QStringLiteral("A recording is being saved")),
      m_idleLock(m_logind, QStringLiteral("idle"), QStringLiteral("block"),
                 QStringLiteral("Recording the screen")),
      m_logind(std::move(system), QStringLiteral("org.freedesktop.login1")) {
    using Make = IdleService (*)();
    const std::vector<Make> services =
        isSandboxed() ? std::vector<Make>{IdleService::portal}
                      : std::vector<Make>{IdleService::screenSaver, IdleService::gnomeSession,
                                          IdleService::powerManagement};
    for (const Make service : services)
        m_idle.push_back(std::make_unique<IdleInhibitor>(session, service()));
    m_logind.onPresence([this](bool isPresent) {
        if (!isPresent)
            return;
        m_sleepLock.holdAgain();
        m_idleLock.holdAgain();
        if (m_handler && m_session.isEmpty())
            start(m_handler);
        else if (!m_session.isEmpty())
            readActive();
    });
}

void LogindSessionMonitor::start(std::function<void(Event)> handler) {
    const bool isFirst = !std::exchange(m_handler, std::move(handler));
    if (isFirst) {
        m_logind.onSignal(managerPath, managerInterface, QStringLiteral("PrepareForSleep"),
                          [this](const QDBusMessage &message) {
                              report(message.arguments().value(0).toBool() ? Event::willSleep
                                                                           : Event::didWake);
                          });
        m_logind.onSignal(managerPath, managerInterface, QStringLiteral("PrepareForShutdown"),
                          [this](const QDBusMessage &message) {
                              // False: the shutdown was called off.
                              if (message.arguments().value(0).toBool())
                                  report(Event::willShutDown);
                          });
    }
    std::vector<Question> questions;
    if (const QString id = qEnvironmentVariable("XDG_SESSION_ID"); !id.isEmpty())
        questions.push_back({QStringLiteral("GetSession"), {id}});
    questions.push_back({QStringLiteral("GetSessionByPID"), {uint(::getpid())}});
    findSession(std::move(questions));
}

void LogindSessionMonitor::findSession(std::vector<Question> waysToAsk) {
    // Whoever was started by the user's service manager belongs to no session by its process.
    if (waysToAsk.empty())
        return askDisplay();
    const Question question = waysToAsk.front();
    waysToAsk.erase(waysToAsk.begin());
    m_logind.call({managerPath, managerInterface, question.member, question.arguments},
                  [this, rest = std::move(waysToAsk)](const BusClient::Answer &answer) {
                      if (answer)
                          watchSession(answer->arguments().value(0).value<QDBusObjectPath>().path());
                      else
                          findSession(rest);
                  });
}

void LogindSessionMonitor::askDisplay() {
    m_logind.call({"/org/freedesktop/login1/user/self",
                   propertiesInterface,
                   "Get",
                   {QStringLiteral("org.freedesktop.login1.User"), QStringLiteral("Display")}},
                  [this](const BusClient::Answer &answer) {
                      if (!answer)
                          return;
                      const QVariant display = answer->arguments().value(0).value<QDBusVariant>().variant();
                      if (!display.canConvert<QDBusArgument>())
                          return;
                      QString id;
                      QDBusObjectPath path;
                      const auto pair = display.value<QDBusArgument>();
                      pair.beginStructure();
                      pair >> id >> path;
                      pair.endStructure();
                      if (!id.isEmpty())
                          watchSession(path.path());
                  });
}

void LogindSessionMonitor::watchSession(const QString &path) {
    if (!std::exchange(m_session, path).isEmpty())
        return;
    m_logind.onSignal(m_session, propertiesInterface, QStringLiteral("PropertiesChanged"),
                      [this](const QDBusMessage &message) {
                          const QVariantList arguments = message.arguments();
                          if (arguments.value(0).toString() != sessionInterface)
                              return;
                          const auto changed = qdbus_cast<QVariantMap>(arguments.value(1));
                          if (changed.contains(activeProperty))
                              setActive(changed.value(activeProperty).toBool());
                          else if (arguments.value(2).toStringList().contains(activeProperty))
                              readActive();
                      });
    readActive();
}

void LogindSessionMonitor::readActive() {
    m_logind.call({m_session, propertiesInterface, "Get", {sessionInterface, activeProperty}},
                  [this](const BusClient::Answer &answer) {
                      if (answer)
                          setActive(answer->arguments().value(0).value<QDBusVariant>().variant().toBool());
                  });
}

void LogindSessionMonitor::setActive(bool active) {
    const std::optional<bool> before = std::exchange(m_isActive, active);
    // The first is how it is, not a change.
    if (before && *before != active)
        report(active ? Event::sessionBecameActive : Event::sessionResigned);
}

void LogindSessionMonitor::keepAwake(bool awake) {
    m_idleLock.hold(awake);
    for (const auto &inhibitor : m_idle)
        inhibitor->hold(awake);
    if (m_suspendBlanking)
        m_suspendBlanking(awake);
}

void LogindSessionMonitor::report(Event event) const {
    // A copy: it may destroy this object.
    if (const auto handler = m_handler)
        handler(event);
}

} // namespace vantrell
