// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseConnection.h"

#include <utility>

namespace vantrell {

namespace {

/// Restarting a sound server takes about as long; asking a socket that is not there costs nothing.
constexpr std::chrono::seconds reconnectInterval{1};

} // namespace

PulseConnection::PulseConnection(const PulseLoop &loop, Handlers handlers)
    : m_loop(loop), m_handlers(std::move(handlers)), m_retry(loop, [this] { connect(); }) {}

void PulseConnection::connect() {
    m_context.reset(pa_context_new(m_loop.api(), "Vantrell Capture"));
    pa_context_set_state_callback(
        m_context.get(),
        [](pa_context *, void *self) { static_cast<PulseConnection *>(self)->stateChanged(); }, this);
    pa_context_set_subscribe_callback(
        m_context.get(),
        [](pa_context *, pa_subscription_event_type_t event, std::uint32_t, void *self) {
            // Changes of a volume or a port are changes too, of no interest and many.
            const bool isChange = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE;
            const bool isServer =
                (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SERVER;
            if (isServer || !isChange)
                static_cast<PulseConnection *>(self)->m_handlers.devicesChanged();
        },
        this);
    // A recorder starts no servers.
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        lost();
}

void PulseConnection::stateChanged() {
    switch (pa_context_get_state(m_context.get())) {
    case PA_CONTEXT_READY: {
        const auto what = pa_subscription_mask_t(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SOURCE |
                                                 PA_SUBSCRIPTION_MASK_SINK);
        if (pa_operation *asked = pa_context_subscribe(m_context.get(), what, nullptr, nullptr))
            pa_operation_unref(asked);
        m_handlers.connected(m_context.get());
        return;
    }
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        lost();
        return;
    default:
        return;
    }
}

void PulseConnection::lost() {
    // The context stays until the next attempt: it is on the stack, and connect replaces it. An attempt that
    // fails at once gets here twice.
    m_handlers.disconnected();
    m_retry.start(reconnectInterval);
}

} // namespace vantrell
