// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireConnection.h"

#include "Support/Log.h"

#include <cerrno>
#include <utility>

namespace vantrell {

std::expected<std::unique_ptr<PipeWireConnection>, PlatformError>
PipeWireConnection::open(const PipeWireLoop &loop, std::optional<UniqueFd> socket, Lost lost) {
    if (!loop.context())
        return std::unexpected(PlatformError::fromErrno("start PipeWire", errno));
    // The library closes the socket, also when it fails.
    PipeWireCorePtr core(socket ? pw_context_connect_fd(loop.context(), socket->release(), nullptr, 0)
                                : pw_context_connect(loop.context(), nullptr, 0));
    if (!core)
        return std::unexpected(PlatformError::fromErrno("connect to PipeWire", errno));
    return std::unique_ptr<PipeWireConnection>(new PipeWireConnection(std::move(core), std::move(lost)));
}

PipeWireConnection::PipeWireConnection(PipeWireCorePtr core, Lost lost)
    : m_core(std::move(core)), m_lost(std::move(lost)) {
    static const pw_core_events events{
        .version = PW_VERSION_CORE_EVENTS,
        .done =
            [](void *self, std::uint32_t id, int sequence) {
                if (id == PW_ID_CORE)
                    static_cast<PipeWireConnection *>(self)->serverDone(sequence);
            },
        .error =
            [](void *self, std::uint32_t id, int, int result, const char *message) {
                static_cast<PipeWireConnection *>(self)->serverFailed(id, result, message);
            },
    };
    pw_core_add_listener(m_core.get(), m_listener.hook(), &events, this);
}

void PipeWireConnection::whenAnswered(std::function<void()> done) {
    m_waiting[pw_core_sync(m_core.get(), PW_ID_CORE, 0)] = std::move(done);
}

void PipeWireConnection::serverDone(int sequence) {
    if (auto answered = m_waiting.extract(sequence))
        answered.mapped()();
}

void PipeWireConnection::serverFailed(std::uint32_t id, int result, const char *message) {
    // Other errors are about single objects, which tell them themselves.
    if (id != PW_ID_CORE || result != -EPIPE)
        return;
    qCInfo(logCapture, "pipewire went away: %s", message ? message : "");
    m_waiting.clear();
    if (const Lost lost = std::exchange(m_lost, nullptr))
        lost();
}

} // namespace vantrell
