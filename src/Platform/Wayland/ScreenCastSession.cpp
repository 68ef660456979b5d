// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/ScreenCastSession.h"

#include "Platform/PipeWire/PipeWireWatch.h"
#include "Platform/ScreenError.h"
#include "Support/HostTime.h"
#include "Support/Log.h"
#include "Support/Sandbox.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QUuid>

#include <utility>

#include <fcntl.h>

namespace vantrell {

namespace {

const QString screenCast = QStringLiteral("ScreenCast");

// The bits of AvailableSourceTypes and AvailableCursorModes.
constexpr unsigned monitorBit = 1;
constexpr unsigned windowBit = 2;
constexpr unsigned hiddenBit = 1;
constexpr unsigned embeddedBit = 2;
constexpr unsigned metadataBit = 4;
/// Kept until it is revoked.
constexpr unsigned persistsForGood = 2;
constexpr unsigned versionWithTokens = 4;
constexpr unsigned versionWithCursorModes = 2;

/// Nobody reads a dialog and dismisses it in less.
constexpr double quickestUser = 0.3;

using Session = ScreenCastSession;

/// What nobody can have dismissed yet, the desktop itself has refused: its user would hear nothing at all.
PlatformError refusedUnasked() {
    return screenError(ScreenErrorCode::noDialog,
                       "The desktop refused to share the screen without asking. Its dialog may be missing "
                       "(on sway: install slurp)");
}

struct CursorChoice {
    unsigned bit;
    Session::Pointer pointer;
};

/// The best that the desktop has: a pointer that is lost is the worst.
CursorChoice cursorChoice(unsigned offered, const Session::Wish &wish) {
    if (wish.hidesPointer && (offered & hiddenBit))
        return {hiddenBit, Session::Pointer::hidden};
    if ((wish.separatesPointer || wish.hidesPointer) && (offered & metadataBit))
        return {metadataBit, Session::Pointer::metadata};
    if (offered & embeddedBit)
        return {embeddedBit, Session::Pointer::embedded};
    if (offered & metadataBit)
        return {metadataBit, Session::Pointer::metadata};
    return {offered & hiddenBit, Session::Pointer::hidden};
}

std::optional<Point> pairOf(const QVariant &value) {
    if (!value.canConvert<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("(ii)"))
        return std::nullopt;
    int first = 0;
    int second = 0;
    argument.beginStructure();
    argument >> first >> second;
    argument.endStructure();
    return Point{double(first), double(second)};
}

/// The bus refuses a whole message for a token of another shape; ours come from the desktop, but lie in a
/// file.
bool isWellFormed(const std::string &token) {
    return !QUuid::fromString(QString::fromStdString(token)).isNull();
}

Session::Failure serverLost() {
    return screenError(ScreenErrorCode::connectionLost,
                       "PipeWire, which carries the screen, cannot be reached");
}

} // namespace

Task<std::expected<Session::Opened, Session::Failure>>
ScreenCastSession::open(PortalRequests *portal, Wish wish, std::stop_token stop) {
    const auto offered = co_await portal->properties(screenCast, stop);
    if (!offered)
        co_return std::unexpected(offered.error());
    const unsigned version = offered->value(QStringLiteral("version")).toUInt();
    const unsigned wanted = wish.source == Source::window ? windowBit : monitorBit;
    // A desktop that does not tell what it has, has monitors.
    const QVariant types = offered->value(QStringLiteral("AvailableSourceTypes"));
    if (((types.isValid() ? types.toUInt() : monitorBit) & wanted) == 0)
        co_return std::unexpected(Failure(screenError(
            ScreenErrorCode::noDialog, wish.source == Source::window
                                           ? "This desktop shares whole displays only, no single windows"
                                           : "This desktop shares no displays")));

    // Without PipeWire no desktop can share anything, and not each of them answers then. Looked for first,
    // since naming a token uses it up.
    std::stop_source patience;
    bool isServerLost = false;
    // By a copy: this ends within the request, and takes its own along.
    const auto giveUp = [&patience] { std::stop_source(patience).request_stop(); };
    const std::stop_callback outer(stop, giveUp);
    const PipeWireWatch watch([&isServerLost, giveUp] {
        isServerLost = true;
        giveUp();
    });
    if (!watch.isConnected() && !isSandboxed())
        co_return std::unexpected(serverLost());

    PortalRequests::Request create{screenCast, QStringLiteral("CreateSession"), {}, {}};
    create.options.insert(QStringLiteral("session_handle_token"), portal->newToken());
    const auto created = co_await portal->ask(std::move(create), stop);
    if (!created)
        co_return std::unexpected(created.error());
    const QString path = portal->takeSession(*created);
    std::unique_ptr<ScreenCastSession> session(new ScreenCastSession(*portal, path));

    // Some let their user choose at this point already.
    PortalRequests::Request select{screenCast, QStringLiteral("SelectSources"), {}, {}, std::nullopt};
    const QVariant sessionPath = QVariant::fromValue(QDBusObjectPath(path));
    select.arguments = QVariantList{sessionPath};
    select.options.insert(QStringLiteral("types"), wanted);
    select.options.insert(QStringLiteral("multiple"), false);
    const unsigned cursorModes = offered->value(QStringLiteral("AvailableCursorModes")).toUInt();
    const auto cursor = cursorChoice(cursorModes, wish);
    session->m_pointer = cursor.pointer;
    session->m_isPointerOutAsCanBe = cursor.pointer != Pointer::embedded ||
                                     cursorChoice(cursorModes, {.hidesPointer = true}).bit == embeddedBit;
    if (version >= versionWithCursorModes && cursor.bit != 0)
        select.options.insert(QStringLiteral("cursor_mode"), cursor.bit);
    if (version >= versionWithTokens) {
        select.options.insert(QStringLiteral("persist_mode"), persistsForGood);
        if (wish.restoreToken && isWellFormed(*wish.restoreToken))
            select.options.insert(QStringLiteral("restore_token"),
                                  QString::fromStdString(*wish.restoreToken));
    }
    const double asked = hostNow();
    const auto refusal = [asked, &stop](const Failure &why) {
        const bool isUnasked = std::holds_alternative<Cancelled>(why) && !stop.stop_requested() &&
                               hostNow() - asked < quickestUser;
        return isUnasked ? Failure(refusedUnasked()) : why;
    };
    const auto selected = co_await portal->ask(std::move(select), stop);
    if (!selected)
        co_return std::unexpected(refusal(selected.error()));

    PortalRequests::Request start{screenCast, QStringLiteral("Start"), {}, {}, std::nullopt};
    start.arguments = QVariantList{sessionPath, QString()};
    start.goesWithSession = true;
    const auto started = co_await portal->ask(std::move(start), patience.get_token());
    if (isServerLost)
        co_return std::unexpected(serverLost());
    if (!started)
        co_return std::unexpected(refusal(started.error()));
    if (!session->takeStreams(started->results))
        co_return std::unexpected(Failure(
            screenError(ScreenErrorCode::noPicture, "The desktop sends no picture of what was chosen")));
    co_return Opened{std::move(session)};
}

ScreenCastSession::~ScreenCastSession() {
    m_portal.closeSession(m_path);
}

bool ScreenCastSession::takeStreams(const QVariantMap &results) {
    const QString token = results.value(QStringLiteral("restore_token")).toString();
    if (!token.isEmpty())
        m_restoreToken = token.toStdString();
    const QVariant streams = results.value(QStringLiteral("streams"));
    if (!streams.canConvert<QDBusArgument>())
        return false;
    const auto list = streams.value<QDBusArgument>();
    bool isFound = false;
    list.beginArray();
    while (!list.atEnd()) {
        unsigned node = 0;
        QVariantMap properties;
        list.beginStructure();
        list >> node >> properties;
        list.endStructure();
        if (std::exchange(isFound, true))
            continue;
        m_node = node;
        m_position = pairOf(properties.value(QStringLiteral("position")));
        if (const auto size = pairOf(properties.value(QStringLiteral("size"))))
            m_logicalSize = Size{size->x, size->y};
    }
    list.endArray();
    return isFound;
}

Task<std::expected<Session::Remote, Session::Failure>> ScreenCastSession::openRemote(std::stop_token stop) {
    QVariantList arguments{QVariant::fromValue(QDBusObjectPath(m_path)), QVariantMap()};
    const auto answer =
        co_await m_portal.call(screenCast, QStringLiteral("OpenPipeWireRemote"), std::move(arguments), stop);
    if (!answer)
        co_return std::unexpected(answer.error());
    const auto socket = answer->value(0).value<QDBusUnixFileDescriptor>();
    const int own = socket.isValid() ? ::fcntl(socket.fileDescriptor(), F_DUPFD_CLOEXEC, 0) : -1;
    if (own < 0)
        co_return std::unexpected(serverLost());
    co_return Remote{UniqueFd(own)};
}

void ScreenCastSession::onClosed(std::function<void()> closed) {
    m_portal.onSessionClosed(m_path, std::move(closed));
}

} // namespace vantrell
