// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Wayland/CastFeed.h"
#include "Platform/Wayland/ScreenCastSession.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <memory>
#include <stop_token>

namespace vantrell {

/// Ends sharings in an order that the desktop's own part survives. wlroots' crashes when a session is closed
/// in the middle of a picture, and hangs for good when one begins while a picture of another is on its way.
/// So the pictures rest before a session closes, and the next one begins when it is gone. Destroyed, it
/// closes what is left at once. Main thread.
class CastCloser {
public:
    /// `feed` may be null.
    void close(std::unique_ptr<ScreenCastSession> session, std::shared_ptr<CastFeed> feed);

    /// Waits for all that are closing, some seconds at most.
    Task<> closed(std::stop_token stop) { return m_scope.join(std::move(stop)); }

private:
    TaskScope m_scope;
};

} // namespace vantrell
