// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/ChildProcess.h"
#include "TestSupport/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vantrell::testing {

/// A session bus of the test's own, and on it a real keyring daemon with keyrings of its own. The bus starts
/// no service by itself, so nobody but this object decides when the daemon is there. Main thread.
///
/// The bus is shared by all sessions of a process, since libraries keep their connection to it; the first one
/// makes it this process's session bus and takes the displays out of the environment, so that nothing can ask
/// on a screen. Everything started ends with the process, however it ends.
class SecretServiceSession {
public:
    /// Without a daemon yet.
    SecretServiceSession();
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

    TemporaryFolder m_home;
    std::unique_ptr<ChildProcess> m_daemon;
};

} // namespace vantrell::testing
