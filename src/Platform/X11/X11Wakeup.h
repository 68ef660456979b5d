// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <optional>

namespace vantrell {

/// Sleeps until a descriptor is readable, a host time has come, or another thread calls `interrupt`.
class X11Wakeup {
public:
    X11Wakeup();

    /// `fd` may be -1. True when interrupted; the interruption is then used up.
    bool wait(int fd, std::optional<double> deadline);

    /// Thread-safe.
    void interrupt();

private:
    UniqueFd m_event;
};

} // namespace vantrell
