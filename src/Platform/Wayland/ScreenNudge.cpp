// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/ScreenNudge.h"

#include "Platform/Wayland/WaylandConnection.h"
#include "Support/UniqueFd.h"

#include <vector>

#include <sys/mman.h>
#include <unistd.h>
#include <wlr-layer-shell-unstable-v1-client.h>

namespace vantrell {

namespace {

constexpr int pixelBytes = 4;
constexpr std::uint32_t compositorVersion = 4;

class Nudge {
public:
    void run();

private:
    struct Pixel {
        wl_surface *surface;
        zwlr_layer_surface_v1 *layer;
    };
    template <typename Object>
    static Object *bind(wl_registry *registry, std::uint32_t name, const wl_interface &interface,
                        std::uint32_t version = 1) {
        return static_cast<Object *>(wl_registry_bind(registry, name, &interface, version));
    }
    void found(wl_registry *registry, std::uint32_t name, std::string_view interface, std::uint32_t version);
    Pixel place(wl_output *output) const;
    wl_buffer *makeBuffer() const;

    WaylandConnection m_connection{
        [this](wl_registry *registry, std::uint32_t name, std::string_view interface, std::uint32_t version) {
            found(registry, name, interface, version);
        }};
    wl_compositor *m_compositor = nullptr;
    wl_shm *m_memory = nullptr;
    zwlr_layer_shell_v1 *m_shell = nullptr;
    std::vector<wl_output *> m_outputs;
};

void Nudge::found(wl_registry *registry, std::uint32_t name, std::string_view interface,
                  std::uint32_t version) {
    if (interface == wl_compositor_interface.name && version >= compositorVersion)
        m_compositor = bind<wl_compositor>(registry, name, wl_compositor_interface, compositorVersion);
    else if (interface == wl_shm_interface.name)
        m_memory = bind<wl_shm>(registry, name, wl_shm_interface);
    else if (interface == zwlr_layer_shell_v1_interface.name)
        m_shell = bind<zwlr_layer_shell_v1>(registry, name, zwlr_layer_shell_v1_interface);
    else if (interface == wl_output_interface.name)
        m_outputs.push_back(bind<wl_output>(registry, name, wl_output_interface));
}

Nudge::Pixel Nudge::place(wl_output *output) const {
    static const zwlr_layer_surface_v1_listener events{
        .configure = [](void *, zwlr_layer_surface_v1 *layer, std::uint32_t serial, std::uint32_t,
                        std::uint32_t) { zwlr_layer_surface_v1_ack_configure(layer, serial); },
        .closed = [](void *, zwlr_layer_surface_v1 *) {},
    };
    wl_surface *surface = wl_compositor_create_surface(m_compositor);
    zwlr_layer_surface_v1 *layer = zwlr_layer_shell_v1_get_layer_surface(
        m_shell, surface, output, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "vantrell-capture");
    zwlr_layer_surface_v1_add_listener(layer, &events, nullptr);
    zwlr_layer_surface_v1_set_size(layer, 1, 1);
    zwlr_layer_surface_v1_set_anchor(layer,
                                     ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT);
    zwlr_layer_surface_v1_set_exclusive_zone(layer, -1);
    wl_region *nowhere = wl_compositor_create_region(m_compositor);
    wl_surface_set_input_region(surface, nowhere);
    wl_region_destroy(nowhere);
    wl_surface_commit(surface);
    return {surface, layer};
}

/// Of one pixel with nothing in it.
wl_buffer *Nudge::makeBuffer() const {
    const UniqueFd file(::memfd_create("pixel", MFD_CLOEXEC));
    if (file.get() < 0 || ::ftruncate(file.get(), pixelBytes) != 0)
        return nullptr;
    wl_shm_pool *pool = wl_shm_create_pool(m_memory, file.get(), pixelBytes);
    wl_buffer *buffer = wl_shm_pool_create_buffer(pool, 0, 1, 1, pixelBytes, WL_SHM_FORMAT_ARGB8888);
    wl_shm_pool_destroy(pool);
    return buffer;
}

void Nudge::run() {
    bool isWell = m_connection.roundTrip() && m_compositor && m_memory && m_shell;
    std::vector<Pixel> pixels;
    wl_buffer *buffer = isWell ? makeBuffer() : nullptr;
    if (buffer) {
        for (wl_output *output : m_outputs)
            pixels.push_back(place(output));
        isWell = m_connection.roundTrip();
    }
    for (const Pixel &pixel : pixels) {
        if (!isWell)
            break;
        wl_surface_attach(pixel.surface, buffer, 0, 0);
        wl_surface_damage_buffer(pixel.surface, 0, 0, 1, 1);
        wl_surface_commit(pixel.surface);
    }
    if (isWell)
        m_connection.roundTrip();
    for (const Pixel &pixel : pixels) {
        zwlr_layer_surface_v1_destroy(pixel.layer);
        wl_surface_destroy(pixel.surface);
    }
    if (buffer)
        wl_buffer_destroy(buffer);
    for (wl_output *output : m_outputs)
        wl_output_destroy(output);
    if (m_shell)
        // The request to destroy it is newer than what is spoken here.
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(m_shell));
    if (m_memory)
        wl_shm_destroy(m_memory);
    if (m_compositor)
        wl_compositor_destroy(m_compositor);
}

} // namespace

void nudgeScreens() {
    Nudge().run();
}

} // namespace vantrell
