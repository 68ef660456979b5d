// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/TemporaryFolder.h"

#include <QDBusMessage>
#include <QVariantList>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vantrell::testing {

/// A real keyring daemon with keyrings of its own on a bus that starts no services, so nobody but this object
/// decides when the daemon is there. It ends with the object, also when the test dies. Main thread.
class SecretServiceSession {
public:
    /// Without a daemon yet.
    explicit SecretServiceSession(SessionBus &bus = SessionBus::ofThisProcess());
    ~SecretServiceSession();
    SecretServiceSession(const SecretServiceSession &) = delete;
    SecretServiceSession &operator=(const SecretServiceSession &) = delete;

    /// The daemon with its default keyring open; returns when it owns its name.
    void startUnlocked();
    /// The daemon as it is after a login without a password; a keyring made before stays locked.
    void startLocked();
    /// Locks or opens the default keyring of the running daemon.
    void lock();
    void unlock();
    /// As the login manager does: no signal tells of it.
    void unlockSilently();
    /// SIGKILL; returns when its name is gone from the bus.
    void kill();
    /// Hung: alive, but answers nothing until it is resumed or killed.
    void suspend();
    void resume();

    /// What is stored, as another program sees it; nothing when there is no such entry.
    std::optional<std::string> lookup(const std::string &service, const std::string &account);
    /// Stores an entry by another program.
    void store(const std::string &service, const std::string &account, const std::string &secret);

    /// Where the daemon keeps its files.
    std::filesystem::path home() const { return m_home.path(); }

private:
    void start(const std::string &arguments);
    QDBusMessage call(const char *interface, const char *method, const QVariantList &arguments) const;
    /// What a shell command needs in front to reach the bus.
    std::string onBus() const;

    SessionBus &m_bus;
    TemporaryFolder m_home;
    std::unique_ptr<ChildProcess> m_daemon;
};

} // namespace vantrell::testing
