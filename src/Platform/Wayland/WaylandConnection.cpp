// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandConnection.h"

#include "Support/HostTime.h"

#include <utility>

#include <poll.h>

namespace vantrell {

namespace {

constexpr double compositorPatience = 4;

} // namespace

WaylandConnection::WaylandConnection(Found found)
    : m_found(std::move(found)), m_display(wl_display_connect(nullptr)) {
    if (!m_display)
        return;
    static const wl_registry_listener events{
        .global =
            [](void *self, wl_registry *registry, std::uint32_t name, const char *interface,
               std::uint32_t version) {
                static_cast<WaylandConnection *>(self)->m_found(registry, name, interface, version);
            },
        .global_remove = [](void *, wl_registry *, std::uint32_t) {},
    };
    m_registry = wl_display_get_registry(m_display.get());
    wl_registry_add_listener(m_registry, &events, this);
}

WaylandConnection::~WaylandConnection() {
    if (!m_display)
        return;
    wl_registry_destroy(m_registry);
    wl_display_flush(m_display.get());
}

bool WaylandConnection::roundTrip() {
    if (!m_display)
        return false;
    bool isDone = false;
    static const wl_callback_listener events{
        .done = [](void *data, wl_callback *, std::uint32_t) { *static_cast<bool *>(data) = true; }};
    wl_callback *callback = wl_display_sync(m_display.get());
    wl_callback_add_listener(callback, &events, &isDone);
    const double end = hostNow() + compositorPatience;
    bool isWell = true;
    while (!isDone && isWell) {
        while (wl_display_prepare_read(m_display.get()) != 0)
            wl_display_dispatch_pending(m_display.get());
        wl_display_flush(m_display.get());
        pollfd waiting{wl_display_get_fd(m_display.get()), POLLIN, 0};
        const int left = int((end - hostNow()) * 1000);
        if (isDone || left <= 0 || ::poll(&waiting, 1, left) <= 0) {
            wl_display_cancel_read(m_display.get());
            isWell = isDone;
        } else {
            isWell = wl_display_read_events(m_display.get()) == 0 &&
                     wl_display_dispatch_pending(m_display.get()) >= 0;
        }
    }
    wl_callback_destroy(callback);
    return isDone;
}

} // namespace vantrell
