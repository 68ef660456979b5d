// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

namespace vantrell::testing {

/// What a desktop's portals stand on: a session bus, PipeWire with its session manager, and the store of
/// permissions, all of a test's own. While it lives this process finds that PipeWire and the portals'
/// descriptions, and has its runtime folder. Main thread.
class PortalGround {
public:
    PortalGround();
    ~PortalGround();
    PortalGround(const PortalGround &) = delete;
    PortalGround &operator=(const PortalGround &) = delete;

    const SessionBus &bus() const { return m_bus; }
    std::filesystem::path folder() const { return m_folder.path(); }
    /// For programs of the session.
    ChildProcess::Environment environment() const;

    /// Starts the portals for a desktop of that name, whose own part is `backend` ("wlr") with `interfaces`
    /// behind "org.freedesktop.impl.portal.".
    void startPortal(const std::string &backend, const std::vector<std::string> &interfaces);
    void killPortal();
    /// SIGSTOP, SIGCONT.
    void signalPortal(int number) const { m_portal->signal(number); }
    /// It answers no more.
    void freezePipeWire();
    void killPipeWire();
    void startPipeWire();

    void require(const std::function<bool()> &condition, const char *complaint) const;

private:
    TemporaryFolder m_folder;
    const ScopedEnvironment m_runtime;
    const ScopedEnvironment m_remote;
    const ScopedEnvironment m_settings;
    const ScopedEnvironment m_descriptions;
    SessionBus m_bus;
    std::unique_ptr<ChildProcess> m_permissions;
    std::vector<std::unique_ptr<ChildProcess>> m_pipeWire;
    std::unique_ptr<ChildProcess> m_portal;
};

} // namespace vantrell::testing
