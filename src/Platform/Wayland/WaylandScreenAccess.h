// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/PortalRequests.h"
#include "Platform/ScreenAccess.h"
#include "Support/TaskScope.h"

#include <QDBusConnection>

#include <string>

namespace vantrell {

/// On Wayland the desktop asks at each recording, or remembers what was allowed: there is nothing to be
/// granted beforehand. What can be missing are the parts of the desktop that share its screen. Main thread.
class WaylandScreenAccess final : public ScreenAccess {
public:
    WaylandScreenAccess(QDBusConnection bus, std::string systemName);

    /// The portal offers screen casts and PipeWire is there, as far as is known.
    bool isGranted() const override;
    /// Looks anew, and has the bus start the portal.
    void request() override;
    /// There is no such place: what is missing is to be installed.
    void openSettings() override { request(); }
    std::string systemName() const override { return m_systemName; }
    std::string whatToDo() const override;

private:
    Task<> look(std::stop_token stop);

    const std::string m_systemName;
    /// Until the answer has come nothing is missing.
    bool m_isPortalMissing = false;
    PortalRequests m_portal;
    TaskScope m_scope;
};

} // namespace vantrell
