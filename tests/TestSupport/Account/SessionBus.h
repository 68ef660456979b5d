// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/ChildProcess.h"
#include "TestSupport/TemporaryFolder.h"

#include <QDBusConnection>

#include <memory>
#include <string>

namespace vantrell::testing {

/// A D-Bus session bus of the test's own. It starts no service by itself: a call to a name that nobody owns
/// fails. It ends with the object, also when the test dies. Main thread.
class SessionBus {
public:
    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    /// This process's session bus, for code under test that runs in it: libraries keep their connection, so
    /// there is one for the life of the process. It also takes the displays out of the environment, so that
    /// nothing can ask on a screen.
    static SessionBus &ofThisProcess();

    const std::string &address() const { return m_address; }
    QDBusConnection connection() const { return m_connection; }
    bool isOwned(const std::string &name) const;
    /// The answer; the event loop runs meanwhile.
    QDBusMessage call(const QDBusMessage &message) const;
    /// SIGKILL.
    void kill();

private:
    TemporaryFolder m_folder;
    std::string m_address;
    std::unique_ptr<ChildProcess> m_daemon;
    QDBusConnection m_connection;
};

} // namespace vantrell::testing
