// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Bus/PortalRequests.h"

#include "Platform/Bus/PortalPart.h"
#include "Platform/Bus/PortalPulse.h"
#include "Support/Log.h"
#include "Support/Sandbox.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QTimer>

#include <utility>

#include <unistd.h>

namespace vantrell {

namespace {

const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalPrefix = QStringLiteral("org.freedesktop.portal.");
constexpr std::chrono::seconds callPatience(10);

constexpr unsigned userCancelled = 1;

QVariantMap mapOf(const QVariant &value) {
    return value.canConvert<QDBusArgument>() ? qdbus_cast<QVariantMap>(value.value<QDBusArgument>())
                                             : value.toMap();
}

QString sessionIn(const QVariantMap &results) {
    // Told as a path by some and as a string by others.
    const QVariant handle = results.value(QStringLiteral("session_handle"));
    return handle.metaType() == QMetaType::fromType<QDBusObjectPath>()
               ? handle.value<QDBusObjectPath>().path()
               : handle.toString();
}

/// The bus's own words for it are for developers.
PlatformError portalErrorOf(const PlatformError &error) {
    if (error.domain != "dbus")
        return error;
    qCInfo(logApp, "portal: %s", error.message.c_str());
    switch (QDBusError::ErrorType(error.code)) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownProperty:
    case QDBusError::Disconnected:
        return portalError(PortalErrorCode::missing);
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return portalError(PortalErrorCode::silent);
    default:
        return portalError(PortalErrorCode::refused);
    }
}

} // namespace

PlatformError portalError(PortalErrorCode code) {
    const char *sentence = "";
    switch (code) {
    case PortalErrorCode::missing:
        sentence = "The desktop's portal is missing: install xdg-desktop-portal and the part of it for this "
                   "desktop, then log in again";
        break;
    case PortalErrorCode::refused:
        sentence = "The desktop refused it";
        break;
    case PortalErrorCode::silent:
        sentence = "The desktop's portal does not answer";
        break;
    case PortalErrorCode::gone:
        sentence = "The desktop's portal went away";
        break;
    }
    return {portalErrorDomain, int(code), sentence};
}

bool isPortalError(const PlatformError &error, PortalErrorCode code) {
    return error.domain == portalErrorDomain && error.code == int(code);
}

PortalRequests::PortalRequests(QDBusConnection bus)
    : m_run(QString::number(::getpid())), m_client(std::move(bus), portalService) {
    // For all requests at once and before the first is made: an answer may come before the call returns.
    m_client.onSignal({}, portalPrefix + QStringLiteral("Request"), QStringLiteral("Response"),
                      [this](const QDBusMessage &message) { responded(message); });
    m_client.onSignal({}, portalPrefix + QStringLiteral("Session"), QStringLiteral("Closed"),
                      [this](const QDBusMessage &message) {
                          const auto closed = m_sessions.extract(message.path());
                          if (closed && closed.mapped().closed)
                              closed.mapped().closed();
                      });
    m_client.onPresence([this](bool isPresent) {
        // Portals that take the name over know nothing of them either.
        for (auto &[path, session] : m_sessions)
            session.isOrphan = true;
        if (!isPresent)
            serviceLost();
    });
}

PortalRequests::~PortalRequests() = default;

QString PortalRequests::newToken() {
    // All of the process are one sender to the portals, and hear each other's answers.
    static int tokens = 0;
    return QStringLiteral("vantrell%1_%2").arg(m_run).arg(++tokens);
}

QString PortalRequests::pathOf(const QString &kind, const QString &token) const {
    const QString sender = m_client.bus().baseService().mid(1).replace(u'.', u'_');
    return portalPath + u'/' + kind + u'/' + sender + u'/' + token;
}

void PortalRequests::responded(const QDBusMessage &message) {
    const auto request = m_waiting.find(message.path());
    const QVariantList arguments = message.arguments();
    if (arguments.size() < 2)
        return;
    const Answer answer{mapOf(arguments[1])};
    if (request == m_waiting.end()) {
        // One that hung has come to itself.
        if (m_unwanted.contains(sessionIn(answer.results)))
            closeSession(takeSession(answer));
        return;
    }
    const unsigned code = arguments[0].toUInt();
    if (code == 0)
        request->second.resolve(answer);
    else if (code == userCancelled)
        request->second.resolve(std::unexpected(Failure(Cancelled{})));
    else
        request->second.resolve(std::unexpected(Failure(portalError(PortalErrorCode::refused))));
}

void PortalRequests::serviceLost() {
    for (const auto &[path, answered] : m_waiting)
        answered.resolve(std::unexpected(Failure(portalError(PortalErrorCode::gone))));
    if (m_gone)
        m_gone();
}

Task<std::expected<PortalRequests::Answer, PortalRequests::Failure>>
PortalRequests::ask(Request request, std::stop_token stop) {
    const QString token = newToken();
    QString path = pathOf(QStringLiteral("request"), token);
    const OneShot<Response> answered;
    m_waiting.emplace(path, answered);
    QVariantMap options = request.options;
    options.insert(QStringLiteral("handle_token"), token);
    QVariantList arguments = request.arguments;
    arguments.append(options);
    const BusClient::Call asking{portalPath, portalPrefix + request.interface, request.member, arguments,
                                 true};
    m_client.call(
        asking,
        [answered](const BusClient::Answer &answer) {
            if (!answer)
                answered.resolve(std::unexpected(Failure(portalErrorOf(answer.error()))));
        },
        // The call itself returns before the dialog opens, but a backend that starts up is slow.
        std::chrono::minutes(1));
    const auto giveUp = [answered] {
        answered.resolve(std::unexpected(Failure(portalError(PortalErrorCode::silent))));
    };
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, giveUp);
    std::optional<PortalPulse> pulse;
    if (request.isUrgent)
        pulse.emplace(bus(), request.interface, giveUp);
    if (request.patience)
        timer.start(*request.patience);
    auto response = co_await answered.wait(stop);
    m_waiting.erase(path);
    const bool isOpen = !response || (!*response && std::holds_alternative<PlatformError>(response->error()));
    const QString session = request.options.value(QStringLiteral("session_handle_token")).toString();
    if (isOpen && !session.isEmpty())
        m_unwanted.insert(pathOf(QStringLiteral("session"), session));
    if (isOpen && !request.goesWithSession)
        m_client.call({path, portalPrefix + QStringLiteral("Request"), QStringLiteral("Close"), {}, false});
    if (!response)
        co_return std::unexpected(Failure(Cancelled{}));
    co_return std::move(*response);
}

Task<std::expected<QVariantList, PortalRequests::Failure>>
PortalRequests::callMethod(QString portal, QString interface, QString member, QVariantList arguments,
                           std::stop_token stop) {
    const OneShot<std::expected<QVariantList, PlatformError>> answered;
    const BusClient::Call calling{portalPath, interface, member, arguments, true};
    m_client.call(
        calling,
        [answered](const BusClient::Answer &answer) {
            if (answer)
                answered.resolve(answer->arguments());
            else
                answered.resolve(std::unexpected(portalErrorOf(answer.error())));
        },
        callPatience);
    const PortalPulse pulse(bus(), portal, [answered] {
        answered.resolve(std::unexpected(portalError(PortalErrorCode::silent)));
    });
    auto answer = co_await answered.wait(stop);
    if (!answer)
        co_return std::unexpected(Failure(Cancelled{}));
    if (!*answer)
        co_return std::unexpected(Failure(answer->error()));
    co_return std::move(**answer);
}

Task<std::expected<QVariantList, PortalRequests::Failure>>
PortalRequests::call(QString interface, QString member, QVariantList arguments, std::stop_token stop) {
    return callMethod(interface, portalPrefix + interface, std::move(member), std::move(arguments), stop);
}

Task<std::expected<QVariantMap, PortalRequests::Failure>> PortalRequests::properties(QString interface,
                                                                                     std::stop_token stop) {
    const QVariantList arguments{portalPrefix + interface};
    const auto answer = co_await callMethod(interface, QStringLiteral("org.freedesktop.DBus.Properties"),
                                            QStringLiteral("GetAll"), arguments, stop);
    if (!answer) {
        // The portals answer a question for an interface that they do not have with whatever error.
        const auto *const error = std::get_if<PlatformError>(&answer.error());
        co_return std::unexpected(error && isPortalError(*error, PortalErrorCode::refused)
                                      ? Failure(portalError(PortalErrorCode::missing))
                                      : answer.error());
    }
    const QVariantMap found = answer->isEmpty() ? QVariantMap() : mapOf(answer->front());
    if (found.isEmpty())
        co_return std::unexpected(Failure(portalError(PortalErrorCode::missing)));
    co_return found;
}

QString PortalRequests::takeSession(const Answer &created) {
    const QString path = sessionIn(created.results);
    m_unwanted.erase(path);
    m_sessions[path] = {};
    return path;
}

void PortalRequests::onSessionClosed(const QString &session, std::function<void()> closed) {
    if (const auto found = m_sessions.find(session); found != m_sessions.end())
        found->second.closed = std::move(closed);
    else
        closed();
}

void PortalRequests::closeSession(const QString &session) {
    const auto closing = m_sessions.extract(session);
    if (!closing)
        return;
    if (closing.mapped().isOrphan) {
        closeBehindPortals(session);
        return;
    }
    m_client.call({session, portalPrefix + QStringLiteral("Session"), QStringLiteral("Close"), {}, false},
                  [this, session](const BusClient::Answer &answer) {
                      // They go away this very moment.
                      if (!answer)
                          closeBehindPortals(session);
                  });
}

void PortalRequests::closeBehindPortals(const QString &session) {
    const QDBusConnectionInterface *const names = bus().interface();
    if (isSandboxed() || !names)
        return;
    // The bus itself answers, and at once: this may be the last that the program does.
    const QStringList services = names->registeredServiceNames();
    for (const QString &service : services) {
        if (!service.startsWith(portalPartPrefix))
            continue;
        QDBusMessage close = QDBusMessage::createMethodCall(
            service, session, QStringLiteral("org.freedesktop.impl.portal.Session"), QStringLiteral("Close"));
        close.setAutoStartService(false);
        bus().send(close);
    }
}

void PortalRequests::onPartChanged(const QString &portal, std::function<void()> changed) {
    m_parts = std::make_unique<QDBusServiceWatcher>(portalPartPrefix.chopped(1) + u'*', bus(),
                                                    QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(m_parts.get(), &QDBusServiceWatcher::serviceOwnerChanged, m_parts.get(),
                     [portal, told = std::move(changed)](const QString &part) {
                         if (servesPortal(part, portal))
                             told();
                     });
}

void PortalRequests::onSignal(const QString &interface, const QString &member,
                              std::function<void(const QDBusMessage &)> handler) {
    m_client.onSignal(portalPath, portalPrefix + interface, member, std::move(handler));
}

} // namespace vantrell
