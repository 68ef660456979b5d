// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/PortalRequests.h"
#include "Platform/HotKeyBackend.h"
#include "Support/TaskScope.h"

#include <QTimer>

#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// Hot keys by the desktop's portal: the desktop hears them and may have assigned others than were asked for.
/// Where it has no such portal, `problem` names the commands that the user can bind himself. Main thread.
class PortalHotKeys final : public HotKeyBackend {
public:
    /// A combination as the desktop's settings show it.
    struct Shortcut {
        Key key;
        /// Never changes: the desktop keeps what the user has assigned under it.
        QString id;
        /// What it does, for the user.
        QString purpose;
    };
    struct Options {
        std::vector<Shortcut> shortcuts;
        /// "KDE", "GNOME", as the session calls itself.
        std::string desktop;
        /// What the key writes when it is held with Shift, as the keyboard's layout has it ("ampersand");
        /// empty: unknown. May be absent.
        std::function<std::string(Key)> shifted;
    };

    PortalHotKeys(QDBusConnection session, Options options);
    ~PortalHotKeys() override;

    /// Always succeeds: what the desktop says to it comes later.
    std::expected<void, PlatformError> grab(Key key, std::function<void()> pressed) override;
    std::optional<std::string> assigned(Key key) const override;
    std::optional<PlatformError> problem() const override { return m_problem; }

private:
    struct Combination {
        std::function<void()> pressed;
        std::optional<std::string> assigned;
    };

    const Shortcut *shortcutWith(const QString &id) const;
    Task<> connect(std::stop_token stop);
    Task<std::expected<void, PortalRequests::Failure>> bind(std::stop_token stop);
    QVariant wishes() const;
    bool takeAssignments(const QVariant &shortcuts);
    void fail(const PortalRequests::Failure &failure);
    void activated(const QDBusMessage &signal);
    void partChanged();
    void lost();

    const Options m_options;
    std::map<Key, Combination> m_combinations;
    QString m_session;
    std::optional<PlatformError> m_problem;
    int m_attempts = 0;
    /// Collects the combinations first, and tries again after the portal went away.
    QTimer m_connecting;
    PortalRequests m_portal;
    TaskScope m_scope;
};

/// What the user can do where the desktop offers no hot keys.
PlatformError hotKeysByHand(const std::string &desktop);

} // namespace vantrell
