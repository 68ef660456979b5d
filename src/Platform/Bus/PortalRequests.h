// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"
#include "Support/Cancelled.h"
#include "Support/OneShot.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <QDBusConnection>
#include <QString>
#include <QVariant>

#include <chrono>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <variant>

class QDBusServiceWatcher;

namespace vantrell {

/// The codes of a PlatformError whose domain is `portalErrorDomain`.
enum class PortalErrorCode {
    /// Nobody answers for the desktop's portals, or they do not have the one that was asked for.
    missing = 1,
    /// The desktop did not do it, and not because its user dismissed a dialog.
    refused,
    /// No answer in time.
    silent,
    /// It went away before it answered.
    gone,
};

inline constexpr const char *portalErrorDomain = "portal";

/// With the code's fixed sentence.
PlatformError portalError(PortalErrorCode code);

bool isPortalError(const PlatformError &error, PortalErrorCode code);

/// The desktop's portals (org.freedesktop.portal.Desktop): methods whose answer comes later, after a dialog
/// or without one, properties, and the ends of their sessions. Main thread; outlives the tasks it returns.
class PortalRequests {
public:
    explicit PortalRequests(QDBusConnection bus);
    ~PortalRequests();
    PortalRequests(const PortalRequests &) = delete;
    PortalRequests &operator=(const PortalRequests &) = delete;

    using Failure = std::variant<PlatformError, Cancelled>;
    /// What an answer holds.
    struct Answer {
        QVariantMap results;
    };
    struct Request {
        /// Behind "org.freedesktop.portal.".
        QString interface;
        QString member;
        /// What stands before the options.
        QVariantList arguments;
        /// Without the request's own token.
        QVariantMap options;
        /// How long a desktop may take that is slow. Absent: it may open a dialog, which stays as long as
        /// its user likes.
        std::optional<std::chrono::milliseconds> patience = std::chrono::seconds(10);
        /// Somebody waits for the answer: a desktop that hangs is given up.
        bool isUrgent = true;
        /// The asker closes its session when there is no answer, and the dialog goes with it. GNOME's part
        /// does not survive that both are closed.
        bool goesWithSession = false;
    };
    /// Cancelled when the user dismissed the dialog, or when the wait is stopped, which closes the dialog.
    Task<std::expected<Answer, Failure>> ask(Request request, std::stop_token stop);

    /// A method that answers at once; the answer's arguments.
    Task<std::expected<QVariantList, Failure>> call(QString interface, QString member, QVariantList arguments,
                                                    std::stop_token stop);

    /// All properties of a portal. Fails with `missing` where the desktop has none such.
    Task<std::expected<QVariantMap, Failure>> properties(QString interface, std::stop_token stop);

    /// A word that no other request or session of this process has.
    QString newToken();

    /// The session that an answer to CreateSession names; ours until `closeSession`.
    QString takeSession(const Answer &created);
    /// Tells when the desktop ends a session, at once if it has.
    void onSessionClosed(const QString &session, std::function<void()> closed);
    /// Ends a session, also one that the desktop's own part kept when the portals went away; the desktop's
    /// closing of it is not told of then.
    void closeSession(const QString &session);

    /// The portals have gone, and with them what they kept for us; casts that run may go on all the same.
    void onGone(std::function<void()> gone) { m_gone = std::move(gone); }

    /// The desktop's own part that serves the portal has gone or come: it knows nothing of sessions that it
    /// had, and the portals do not tell. Not out of a sandbox. One for each object.
    void onPartChanged(const QString &portal, std::function<void()> changed);

    /// Signals of a portal.
    void onSignal(const QString &interface, const QString &member,
                  std::function<void(const QDBusMessage &)> handler);

    QDBusConnection bus() const { return m_client.bus(); }

private:
    using Response = std::expected<Answer, Failure>;

    /// Of any interface of the portals' object, on behalf of that portal.
    Task<std::expected<QVariantList, Failure>> callMethod(QString portal, QString interface, QString member,
                                                          QVariantList arguments, std::stop_token stop);
    void responded(const QDBusMessage &message);
    void serviceLost();
    /// At the desktop's own part, where it goes by the same path.
    void closeBehindPortals(const QString &session);
    /// Of what we asked for under that word, `kind` being "request" or "session".
    QString pathOf(const QString &kind, const QString &token) const;

    const QString m_run;
    std::map<QString, OneShot<Response>> m_waiting;
    struct Session {
        std::function<void()> closed;
        /// The portals that opened it have gone, and those of now do not know it.
        bool isOrphan = false;
    };
    std::map<QString, Session> m_sessions;
    /// Asked for, and given up before they were told of.
    std::set<QString> m_unwanted;
    std::function<void()> m_gone;
    std::unique_ptr<QDBusServiceWatcher> m_parts;
    BusClient m_client;
};

} // namespace vantrell
