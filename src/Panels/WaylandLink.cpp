// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/WaylandLink.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cstring>

#include <qpa/qplatformnativeinterface.h>
#include <wayland-client.h>
#include <wlr-layer-shell-unstable-v1-client.h>
#include <xdg-shell-client.h>

namespace vantrell {

namespace {

constexpr std::uint32_t mostLayerShell = 4;
constexpr std::uint32_t mostWindowBase = 2;

void *resource(const char *name) {
    return QGuiApplication::platformNativeInterface()->nativeResourceForIntegration(name);
}

} // namespace

struct WaylandLink::Listeners {
    static void global(void *link, wl_registry *, std::uint32_t name, const char *interface,
                       std::uint32_t version) {
        static_cast<WaylandLink *>(link)->bind(name, interface, version);
    }
    static void globalRemoved(void *, wl_registry *, std::uint32_t) {}
    static void ping(void *, xdg_wm_base *base, std::uint32_t serial) { xdg_wm_base_pong(base, serial); }

    static constexpr wl_registry_listener registry{global, globalRemoved};
    static constexpr xdg_wm_base_listener windowBase{ping};
};

WaylandLink *WaylandLink::instance() {
    static const std::unique_ptr<WaylandLink> link = [] {
        if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
            return std::unique_ptr<WaylandLink>();
        auto *display = static_cast<wl_display *>(resource("wl_display"));
        return std::unique_ptr<WaylandLink>(display ? new WaylandLink(display) : nullptr);
    }();
    return link.get();
}

WaylandLink::WaylandLink(wl_display *display)
    : m_display(display), m_queue(wl_display_create_queue(display)) {
    m_registry = onOwnQueue(display, [](wl_display *copy) { return wl_display_get_registry(copy); });
    wl_registry_add_listener(m_registry, &Listeners::registry, this);
    roundtrip();
    if (m_windowBase) {
        xdg_wm_base_add_listener(m_windowBase, &Listeners::windowBase, this);
        release(m_windowBase);
    }
    release(m_registry);
}

// Lives as long as the process, whose end closes Qt's connection before.
WaylandLink::~WaylandLink() = default;

void WaylandLink::bind(std::uint32_t name, const char *interface, std::uint32_t version) {
    if (std::strcmp(interface, zwlr_layer_shell_v1_interface.name) == 0) {
        m_layerShellVersion = std::min(version, mostLayerShell);
        m_layerShell = static_cast<zwlr_layer_shell_v1 *>(
            wl_registry_bind(m_registry, name, &zwlr_layer_shell_v1_interface, m_layerShellVersion));
    } else if (std::strcmp(interface, xdg_wm_base_interface.name) == 0) {
        m_windowBase = static_cast<xdg_wm_base *>(
            wl_registry_bind(m_registry, name, &xdg_wm_base_interface, std::min(version, mostWindowBase)));
    }
}

void *WaylandLink::ownCopy(void *object) {
    void *copy = wl_proxy_create_wrapper(object);
    wl_proxy_set_queue(static_cast<wl_proxy *>(copy), m_queue);
    return copy;
}

void WaylandLink::forget(void *copy) {
    wl_proxy_wrapper_destroy(copy);
}

void WaylandLink::release(void *object) {
    wl_proxy_set_queue(static_cast<wl_proxy *>(object), nullptr);
    // What has come meanwhile.
    wl_display_dispatch_queue_pending(m_display, m_queue);
}

bool WaylandLink::roundtrip() {
    return wl_display_roundtrip_queue(m_display, m_queue) >= 0;
}

wl_surface *WaylandLink::surfaceOf(const QWindow &window) {
    if (!window.handle())
        return nullptr;
    return static_cast<wl_surface *>(QGuiApplication::platformNativeInterface()->nativeResourceForWindow(
        "surface", const_cast<QWindow *>(&window)));
}

wl_output *WaylandLink::outputOf(const QScreen &screen) {
    return static_cast<wl_output *>(QGuiApplication::platformNativeInterface()->nativeResourceForScreen(
        "output", const_cast<QScreen *>(&screen)));
}

void WaylandLink::setParent(QWindow *window, QWindow *parent) {
    const auto topLevel = [](QWindow *of) {
        const bool isThere = of && of->isVisible() && of->handle();
        return static_cast<xdg_toplevel *>(
            isThere ? QGuiApplication::platformNativeInterface()->nativeResourceForWindow("xdg_toplevel", of)
                    : nullptr);
    };
    xdg_toplevel *child = topLevel(window);
    xdg_toplevel *below = topLevel(parent);
    if (child && below)
        xdg_toplevel_set_parent(child, below);
}

wl_seat *WaylandLink::seat() const {
    return static_cast<wl_seat *>(resource("wl_seat"));
}

wl_compositor *WaylandLink::compositor() const {
    return static_cast<wl_compositor *>(resource("compositor"));
}

std::uint32_t WaylandLink::inputSerial() const {
    return std::uint32_t(reinterpret_cast<std::uintptr_t>(resource("serial")));
}

} // namespace vantrell
