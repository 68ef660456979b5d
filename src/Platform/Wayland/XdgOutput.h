// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <wayland-client.h>

#include <cstdint>

// The part of the protocol xdg-output that tells where a monitor lies among the others, written out here: no
// library has it.

namespace vantrell {

extern const wl_interface xdgOutputManagerInterface;
extern const wl_interface xdgOutputInterface;

/// The events of an xdg_output, in the protocol's order.
struct XdgOutputEvents {
    void (*logicalPosition)(void *, wl_proxy *, std::int32_t x, std::int32_t y);
    void (*logicalSize)(void *, wl_proxy *, std::int32_t width, std::int32_t height);
    void (*done)(void *, wl_proxy *);
    void (*name)(void *, wl_proxy *, const char *name);
    void (*description)(void *, wl_proxy *, const char *description);
};

/// The one of that monitor, which the caller destroys. `events` outlive it.
wl_proxy *xdgOutputOf(wl_proxy *manager, wl_output *output, const XdgOutputEvents &events, void *data);

} // namespace vantrell
