// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/PortalRequests.h"
#include "Platform/Camera/PipeWireRemote.h"

#include <QDBusConnection>

#include <stop_token>

namespace vantrell {

/// The desktop's portal for cameras: it asks the user, and opens the way to the server that has them. Main
/// thread; outlives the tasks it returns.
class CameraPortal {
public:
    explicit CameraPortal(QDBusConnection bus) : m_requests(std::move(bus)) {}

    /// Whether the user allows it. A dialog may stay open for minutes; stopping closes it.
    Task<bool> requestAccess(std::stop_token stop);

    /// Opens a connection for each who asks, on their threads. Fails with CameraErrorCode::accessRefused
    /// before the user has allowed it, noCameraServer where there is no such portal.
    PipeWireRemote remote() const;

private:
    PortalRequests m_requests;
};

} // namespace vantrell
