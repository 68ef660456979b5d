// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerProbe.h"

#include "Panels/WaylandLink.h"

#include <QScreen>

#include <cstdint>
#include <optional>

#include <wayland-client.h>
#include <wlr-layer-shell-unstable-v1-client.h>
#include <xdg-shell-client.h>

namespace vantrell {

namespace {

using Answer = std::optional<QSize>;

void configured(void *answer, zwlr_layer_surface_v1 *layer, std::uint32_t serial, std::uint32_t width,
                std::uint32_t height) {
    zwlr_layer_surface_v1_ack_configure(layer, serial);
    *static_cast<Answer *>(answer) = QSize(int(width), int(height));
}

void closed(void *answer, zwlr_layer_surface_v1 *) {
    *static_cast<Answer *>(answer) = QSize();
}

struct Maximized {
    QSize room;
    bool isTold = false;

    static void configured(void *told, xdg_surface *surface, std::uint32_t serial) {
        xdg_surface_ack_configure(surface, serial);
        static_cast<Maximized *>(told)->isTold = true;
    }
    static void sized(void *told, xdg_toplevel *, std::int32_t width, std::int32_t height, wl_array *) {
        static_cast<Maximized *>(told)->room = QSize(width, height);
    }
    static void closed(void *, xdg_toplevel *) {}

    static constexpr xdg_surface_listener surfaceListener{configured};
    static constexpr xdg_toplevel_listener windowListener{sized, closed, nullptr, nullptr};
};

/// What a maximized window would get: asked of the compositor, never shown.
QSize probeMaximized(WaylandLink &link) {
    Maximized told;
    wl_surface *surface = wl_compositor_create_surface(link.compositor());
    xdg_surface *role = link.onOwnQueue(
        link.windowBase(), [&](xdg_wm_base *base) { return xdg_wm_base_get_xdg_surface(base, surface); });
    xdg_surface_add_listener(role, &Maximized::surfaceListener, &told);
    xdg_toplevel *window = xdg_surface_get_toplevel(role);
    xdg_toplevel_add_listener(window, &Maximized::windowListener, &told);
    xdg_toplevel_set_maximized(window);
    wl_surface_commit(surface);
    while (!told.isTold && link.roundtrip()) {
    }
    xdg_toplevel_destroy(window);
    xdg_surface_destroy(role);
    wl_surface_destroy(surface);
    return told.room;
}

} // namespace

QSize probeRoom(WaylandLink &link, const QScreen &screen) {
    constexpr zwlr_layer_surface_v1_listener listener{configured, closed};
    constexpr int respectsOthers = 0;
    Answer answer;
    wl_surface *surface = wl_compositor_create_surface(link.compositor());
    zwlr_layer_surface_v1 *layer = link.onOwnQueue(link.layerShell(), [&](zwlr_layer_shell_v1 *shell) {
        return zwlr_layer_shell_v1_get_layer_surface(shell, surface, WaylandLink::outputOf(screen),
                                                     ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND,
                                                     "vantrell-capture");
    });
    zwlr_layer_surface_v1_add_listener(layer, &listener, &answer);
    zwlr_layer_surface_v1_set_anchor(
        layer, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                   ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
    zwlr_layer_surface_v1_set_exclusive_zone(layer, respectsOthers);
    wl_surface_commit(surface);
    while (!answer && link.roundtrip()) {
    }
    zwlr_layer_surface_v1_destroy(layer);
    wl_surface_destroy(surface);
    const QSize whole = screen.geometry().size();
    QSize room = answer && answer->isValid() && !answer->isEmpty() ? *answer : whole;
    // Plasma's own panel is no layer surface in every version: windows keep clear of it, layers are not told.
    if (room == whole && qgetenv("XDG_CURRENT_DESKTOP").contains("KDE") && link.windowBase()) {
        const QSize maximized = probeMaximized(link);
        const bool isOfThisScreen =
            maximized.width() > whole.width() * 3 / 4 && maximized.width() <= whole.width() &&
            maximized.height() > whole.height() * 3 / 4 && maximized.height() <= whole.height();
        if (isOfThisScreen)
            room = maximized;
    }
    return room;
}

} // namespace vantrell
