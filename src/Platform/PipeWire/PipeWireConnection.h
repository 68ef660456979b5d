// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireLoop.h"
#include "Support/PlatformError.h"
#include "Support/UniqueFd.h"

#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace vantrell {

/// A connection to a PipeWire server. Everything happens on the loop's thread or with its lock held. It does
/// not come back by itself: whoever lost one makes the next.
class PipeWireConnection {
public:
    /// Called once when the server went away. Not the place to destroy the connection: a PipeWireTimer
    /// without a delay is.
    using Lost = std::function<void()>;

    /// To the desktop's server, or over a connected socket that a portal gave. Fails when nobody listens
    /// there. A server that is there and says nothing answers no `whenAnswered`.
    static std::expected<std::unique_ptr<PipeWireConnection>, PlatformError>
    open(const PipeWireLoop &loop, std::optional<UniqueFd> socket, Lost lost);
    PipeWireConnection(const PipeWireConnection &) = delete;
    PipeWireConnection &operator=(const PipeWireConnection &) = delete;

    pw_core *core() const { return m_core.get(); }

    /// Calls when the server has done and told all that was asked before.
    void whenAnswered(std::function<void()> done);

private:
    PipeWireConnection(PipeWireCorePtr core, Lost lost);

    void serverDone(int sequence);
    void serverFailed(std::uint32_t id, int result, const char *message);

    PipeWireCorePtr m_core;
    Lost m_lost;
    std::map<int, std::function<void()>> m_waiting;
    PipeWireListener m_listener;
};

} // namespace vantrell
