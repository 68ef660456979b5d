// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PlasmaRooms.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QScreen>

#include <chrono>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 250ms;
constexpr auto silencePause = 30s;

} // namespace

std::optional<QRect> PlasmaRooms::of(const QScreen &screen) {
    if (!qgetenv("XDG_CURRENT_DESKTOP").contains("KDE"))
        return std::nullopt;
    std::optional<QRect> &known = m_known[screen.name()];
    const QRect whole = screen.geometry();
    if (known && !whole.contains(*known))
        known.reset();
    if (!m_pause.hasExpired())
        return known;
    QDBusMessage question = QDBusMessage::createMethodCall(
        QStringLiteral("org.kde.plasmashell"), QStringLiteral("/StrutManager"),
        QStringLiteral("org.kde.PlasmaShell.StrutManager"), QStringLiteral("availableScreenRect"));
    question << screen.name();
    question.setAutoStartService(false);
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(question, QDBus::Block, int(patience.count()));
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("(iiii)")) {
        m_pause.setRemainingTime(silencePause);
        if (QDBusError(answer).type() == QDBusError::ServiceUnknown)
            known.reset();
        return known;
    }
    const auto room = qdbus_cast<QRect>(answer.arguments().constFirst());
    // Of a screen that it does not know it tells another's.
    const bool isOfThisScreen =
        whole.contains(room) && room.width() > whole.width() / 2 && room.height() > whole.height() / 2;
    known = isOfThisScreen ? std::optional(room) : std::nullopt;
    return known;
}

} // namespace vantrell
