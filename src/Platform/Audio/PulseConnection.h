// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Audio/PulseLoop.h"

#include <functional>

namespace vantrell {

/// A connection to the sound server that comes back by itself. Everything happens on the loop's thread;
/// construction and destruction under its lock.
class PulseConnection {
public:
    struct Handlers {
        /// The server answers.
        std::function<void(pa_context *context)> connected;
        /// No server, or no longer; a new attempt follows each second. What belonged to the context is dead.
        std::function<void()> disconnected;
        /// Devices came or went, or the defaults changed.
        std::function<void()> devicesChanged;
    };

    PulseConnection(const PulseLoop &loop, Handlers handlers);

    /// Makes the first attempt.
    void connect();

private:
    void stateChanged();
    void lost();

    const PulseLoop &m_loop;
    const Handlers m_handlers;
    PulseContextPtr m_context;
    PulseTimer m_retry;
};

} // namespace vantrell
