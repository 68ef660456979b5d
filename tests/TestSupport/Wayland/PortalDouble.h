// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "TestSupport/Wayland/PortalGround.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A desktop's own part of the screen cast portal, which the real portal asks: it shows no dialogs and
/// answers as the test says. Lives in the test's event loop.
class PortalDouble final : public QDBusVirtualObject {
public:
    struct Script {
        /// What is shared: the stream's PipeWire number.
        std::uint32_t node = 0;
        /// The response to Start: 0 shared, 1 dismissed, 2 failed.
        unsigned response = 0;
        /// The dialog stays open until `answer`.
        bool isDialogOpen = false;
        unsigned cursorModes = 7;
        unsigned sourceTypes = 7;
        /// Of the stream, in the compositor's units.
        PixelRect place{0, 0, 640, 480};
    };

    /// On the ground's bus, with the portal before it.
    PortalDouble(PortalGround &ground, const Script &script);
    ~PortalDouble() override;

    Script script;
    /// Gives the answer that an open dialog was waiting for.
    void answer();
    bool isAsking() const { return m_pending.has_value(); }
    /// How often the user was asked: an earlier choice is taken without.
    int dialogs() const { return m_dialogs; }
    /// The options of each SelectSources.
    const std::vector<QVariantMap> &selections() const { return m_selections; }
    /// Sessions that are open now.
    int sessions() const { return int(m_sessions.size()); }
    /// As the desktop's own indicator does.
    void endSessions();

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

private:
    void start(const QDBusMessage &message);
    void reply(const QDBusMessage &message, unsigned response, const QVariantMap &results);
    QVariantMap properties(const QString &interface) const;

    PortalGround &m_ground;
    QDBusConnection m_bus;
    QStringList m_sessions;
    std::vector<QVariantMap> m_selections;
    std::optional<QDBusMessage> m_pending;
    int m_dialogs = 0;
};

} // namespace vantrell::testing
