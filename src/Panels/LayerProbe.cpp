// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerProbe.h"

#include "Panels/WaylandLink.h"

#include <QScreen>

#include <cstdint>
#include <optional>

#include <wayland-client.h>
#include <wlr-layer-shell-unstable-v1-client.h>

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
    return answer && answer->isValid() && !answer->isEmpty() ? *answer : screen.geometry().size();
}

} // namespace vantrell
