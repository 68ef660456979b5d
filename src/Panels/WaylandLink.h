// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <memory>

class QScreen;
class QWindow;
struct wl_compositor;
struct wl_display;
struct wl_event_queue;
struct wl_output;
struct wl_registry;
struct wl_seat;
struct wl_surface;
struct xdg_wm_base;
struct zwlr_layer_shell_v1;

namespace vantrell {

/// The panels' view of the Wayland compositor that Qt is connected to: the interfaces that Qt does not use
/// itself, on Qt's own connection. Main thread.
class WaylandLink {
public:
    /// Null where Qt is connected to no Wayland compositor.
    static WaylandLink *instance();
    ~WaylandLink();
    WaylandLink(const WaylandLink &) = delete;
    WaylandLink &operator=(const WaylandLink &) = delete;

    /// Null where the compositor has none.
    zwlr_layer_shell_v1 *layerShell() const { return m_layerShell; }
    xdg_wm_base *windowBase() const { return m_windowBase; }
    std::uint32_t layerShellVersion() const { return m_layerShellVersion; }

    /// What is created with `make` from a copy of the object tells its events in `roundtrip` only, until
    /// `release` leaves them to Qt's event loop.
    template <typename Object, typename Make>
    auto *onOwnQueue(Object *object, Make make) {
        auto *copy = static_cast<Object *>(ownCopy(object));
        auto *made = make(copy);
        forget(copy);
        return made;
    }
    void release(void *object);

    /// Returns when the compositor has answered all that was asked; false when it is gone.
    bool roundtrip();

    /// Null while the window has none.
    static wl_surface *surfaceOf(const QWindow &window);
    static wl_output *outputOf(const QScreen &screen);
    /// Of ordinary windows that are on the screen; else nothing happens.
    static void setParent(QWindow *window, QWindow *parent);
    wl_seat *seat() const;
    wl_compositor *compositor() const;
    /// Of the last key or button.
    std::uint32_t inputSerial() const;

private:
    explicit WaylandLink(wl_display *display);
    void *ownCopy(void *object);
    static void forget(void *copy);
    void bind(std::uint32_t name, const char *interface, std::uint32_t version);

    struct Listeners;
    wl_display *m_display;
    wl_event_queue *m_queue;
    wl_registry *m_registry = nullptr;
    zwlr_layer_shell_v1 *m_layerShell = nullptr;
    std::uint32_t m_layerShellVersion = 0;
    xdg_wm_base *m_windowBase = nullptr;
};

} // namespace vantrell
