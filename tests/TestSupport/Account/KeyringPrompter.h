// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Account/SecretServiceSession.h"

#include <QDBusVirtualObject>

#include <vector>

namespace vantrell::testing {

/// The part of the desktop that shows the keyring daemon's dialogs, and the user in front of it, who leaves a
/// dialog open until told otherwise. Needs a running event loop. Main thread.
class KeyringPrompter : public QDBusVirtualObject {
public:
    explicit KeyringPrompter(SessionBus &bus = SessionBus::ofThisProcess());
    ~KeyringPrompter() override;

    bool isOpen() const { return m_isOpen; }
    /// How many dialogs were shown so far.
    int shown() const { return m_shown; }
    /// Closes the open dialog without an answer.
    void dismiss();
    /// Types the password of `keyring` into the open dialog.
    void typePassword(SecretServiceSession &keyring);

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    /// Where a dialog's answer goes.
    struct Client {
        QString service;
        QString path;
        bool operator==(const Client &) const = default;
    };

    void callBack(const Client &client, const char *method, const QVariantList &arguments = {});
    void answer(const char *reply);

    SessionBus &m_bus;
    /// The first has its dialog, the others wait for theirs.
    std::vector<Client> m_clients;
    bool m_isOpen = false;
    int m_shown = 0;
};

} // namespace vantrell::testing
