// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireConnection.h"
#include "Platform/PipeWire/PipeWireLoop.h"
#include "Platform/PipeWire/PipeWireVideoStream.h"
#include "Platform/Wayland/CastFormat.h"
#include "Platform/Wayland/ScreenCastSession.h"

#include <cstdint>
#include <map>
#include <memory>

namespace vantrell::bench {

/// Listens to the desktop's cast of its screen and reads the number in each picture. Main thread.
class CastListener {
public:
    /// The number stands that far from the screen's corner. Throws where the desktop shares nothing.
    CastListener(const QDBusConnection &bus, int x, int y);
    ~CastListener();

    /// When the compositor stamped the first picture with each number, in host seconds.
    std::map<std::uint32_t, double> heard() const;

private:
    void take();

    const int m_x, m_y;
    PortalRequests m_portal;
    std::unique_ptr<ScreenCastSession> m_session;
    // With the loop's lock.
    mutable PipeWireLoop m_loop{"cast-listener"};
    CastFormat m_format;
    std::map<std::uint32_t, double> m_heard;
    std::unique_ptr<PipeWireConnection> m_connection;
    std::unique_ptr<PipeWireVideoStream> m_stream;
};

} // namespace vantrell::bench
