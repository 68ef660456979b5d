// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "TestSupport/Wayland/PortalGround.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A desktop's own part of the portals for screen casts and hot keys, which the real portal asks: it shows no
/// dialogs and answers as the test says. Lives in the test's event loop.
class PortalDouble final : public QDBusVirtualObject {
public:
    struct Script {
        /// What is shared: the stream's PipeWire number.
        std::uint32_t node = 0;
        /// The response to Start: 0 shared, 1 dismissed, 2 failed.
        unsigned response = 0;
        /// Start is answered by `answer` and not before, whether a dialog is open or not.
        bool isSlow = false;
        /// Nothing is answered until it awakes.
        bool hangs = false;
        unsigned cursorModes = 7;
        unsigned sourceTypes = 7;
        /// Of the stream, in the compositor's units.
        PixelRect place{0, 0, 640, 480};
        bool hasHotKeys = false;
        /// The response to BindShortcuts.
        unsigned bindResponse = 0;
        /// Takes hot keys when the session is opened, and later ones without doing anything for them.
        bool bindsAtOpening = false;
    };

    /// On the ground's bus, with the portal before it.
    PortalDouble(PortalGround &ground, const Script &script);
    ~PortalDouble() override;

    Script script;
    /// Again, after the ground's portal was killed.
    void startPortal();
    /// Hangs no more, and catches up.
    void awake();
    /// What was asked meanwhile.
    std::size_t held() const { return m_held.size(); }
    /// Begins anew, as after a crash: the portals stay.
    void restart();
    /// Gives the answer that an open dialog was waiting for.
    void answer();
    bool isAsking() const { return m_pending.has_value(); }
    /// How often the user was asked: an earlier choice is taken without.
    int dialogs() const { return m_dialogs; }
    /// The options of each SelectSources.
    const std::vector<QVariantMap> &selections() const { return m_selections; }
    /// Sessions that were ever opened.
    int opened() const { return m_opened; }
    /// Sessions that are open now.
    int sessions() const { return int(m_sessions.size()); }
    /// As the desktop's own indicator does.
    void endSessions();

    /// How often BindShortcuts was called.
    int bindings() const { return m_bindings; }
    /// The user presses what is bound under that id; false when nothing is.
    bool press(const QString &id);
    /// The user assigns another combination in the desktop's settings.
    void assign(const QString &id, const QString &trigger);

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

private:
    void start(const QDBusMessage &message);
    /// False when it is no call of the portal for hot keys.
    bool handleHotKeys(const QDBusMessage &message);
    void tellHotKeys(const QString &member, const QVariantList &arguments);
    QVariant boundHotKeys() const;
    void reply(const QDBusMessage &message, unsigned response, const QVariantMap &results);
    QVariantMap properties(const QString &interface) const;

    PortalGround &m_ground;
    QDBusConnection m_bus;
    std::vector<QDBusMessage> m_held;
    QStringList m_sessions;
    int m_opened = 0;
    std::vector<QVariantMap> m_selections;
    std::optional<QDBusMessage> m_pending;
    int m_dialogs = 0;
    QString m_hotKeySession;
    /// By their ids, as the desktop describes their combinations.
    QMap<QString, QString> m_hotKeys;
    int m_bindings = 0;
};

} // namespace vantrell::testing
