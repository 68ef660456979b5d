// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerWindow.h"

#include "Panels/WaylandLink.h"

#include <QApplication>
#include <QEvent>
#include <QPlatformSurfaceEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <utility>

#include <qpa/qplatformwindow.h>
#include <wayland-client.h>
#include <wlr-layer-shell-unstable-v1-client.h>
#include <xdg-shell-client.h>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr const char *windowProperty = "vantrellLayerWindow";
/// Lies where it is put, whatever room the desktop's own panels take.
constexpr int ignoresOthers = -1;
constexpr auto screenPatience = 200ms;

} // namespace

struct LayerWindow::Listeners {
    static LayerWindow &self(void *data) { return *static_cast<LayerWindow *>(data); }

    static void configure(void *data, zwlr_layer_surface_v1 *surface, std::uint32_t serial, std::uint32_t,
                          std::uint32_t) {
        zwlr_layer_surface_v1_ack_configure(surface, serial);
        self(data).m_isConfigured = true;
    }
    static void closed(void *data, zwlr_layer_surface_v1 *) { self(data).close(); }
    static void configurePopupSurface(void *data, xdg_surface *surface, std::uint32_t serial) {
        xdg_surface_ack_configure(surface, serial);
        self(data).m_isConfigured = true;
    }
    static void configurePopup(void *, xdg_popup *, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {}
    static void popupDone(void *data, xdg_popup *) { self(data).close(); }
    static void settled(void *data, wl_callback *done, std::uint32_t) {
        wl_callback_destroy(done);
        self(data).m_settling = nullptr;
    }

    static constexpr zwlr_layer_surface_v1_listener layer{configure, closed};
    static constexpr xdg_surface_listener popupSurface{configurePopupSurface};
    static constexpr xdg_popup_listener popup{configurePopup, popupDone, nullptr};
    static constexpr wl_callback_listener callback{settled};
};

LayerWindow::LayerWindow(QWindow &window, PanelShell::Role role, WaylandLink &link)
    : QObject(&window), m_window(window), m_role(role), m_link(link) {
    window.setProperty(windowProperty, QVariant::fromValue<QObject *>(this));
    window.installEventFilter(this);
    watchSurface();
}

LayerWindow::~LayerWindow() {
    surfaceGone();
}

LayerWindow *LayerWindow::of(const QWindow *window) {
    return window ? static_cast<LayerWindow *>(window->property(windowProperty).value<QObject *>()) : nullptr;
}

bool LayerWindow::eventFilter(QObject *, QEvent *event) {
    switch (event->type()) {
    case QEvent::PlatformSurface:
        if (static_cast<QPlatformSurfaceEvent *>(event)->surfaceEventType() ==
            QPlatformSurfaceEvent::SurfaceCreated)
            watchSurface();
        else
            surfaceGone();
        break;
    case QEvent::Show:
        // Before Qt shows it: the surface may have been there from the window's creation on.
        surfaceMade();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        place();
        break;
    case QEvent::MouseButtonRelease:
        if (m_afterClick)
            QMetaObject::invokeMethod(this, std::exchange(m_afterClick, {}), Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return false;
}

void LayerWindow::watchSurface() {
    auto *platform = dynamic_cast<QObject *>(m_window.handle());
    if (!platform)
        return;
    // The class is Qt's own affair; its signals are found by name.
    QObject::connect(platform, SIGNAL(wlSurfaceCreated()), this, SLOT(surfaceMade()), Qt::UniqueConnection);
    QObject::connect(platform, SIGNAL(wlSurfaceDestroyed()), this, SLOT(surfaceGone()), Qt::UniqueConnection);
}

void LayerWindow::surfaceMade() {
    wl_surface *surface = WaylandLink::surfaceOf(m_window);
    if (!surface || m_layer || m_popup)
        return;
    // A window that is not shown has no place yet.
    if (!m_window.isVisible())
        return;
    m_isConfigured = false;
    m_isFresh = true;
    if (m_role == PanelShell::Role::menu && parentOfPopup())
        makePopup(surface);
    else
        makeLayer(surface);
    // Nothing may be drawn before the compositor has told the size.
    wl_surface_commit(surface);
    while (!m_isConfigured && m_link.roundtrip()) {
    }
    for (void *object :
         {static_cast<void *>(m_layer), static_cast<void *>(m_popupSurface), static_cast<void *>(m_popup)}) {
        if (object)
            m_link.release(object);
    }
}

void LayerWindow::surfaceGone() {
    if (m_settling)
        wl_callback_destroy(std::exchange(m_settling, nullptr));
    if (m_popup)
        xdg_popup_destroy(std::exchange(m_popup, nullptr));
    if (m_popupSurface)
        xdg_surface_destroy(std::exchange(m_popupSurface, nullptr));
    if (m_layer)
        zwlr_layer_surface_v1_destroy(std::exchange(m_layer, nullptr));
}

void LayerWindow::makeLayer(wl_surface *surface) {
    m_screen = m_window.screen();
    m_layer = m_link.onOwnQueue(m_link.layerShell(), [&](zwlr_layer_shell_v1 *shell) {
        return zwlr_layer_shell_v1_get_layer_surface(shell, surface, WaylandLink::outputOf(*m_screen),
                                                     ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "vantrell-capture");
    });
    zwlr_layer_surface_v1_add_listener(m_layer, &Listeners::layer, this);
    zwlr_layer_surface_v1_set_exclusive_zone(m_layer, ignoresOthers);
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer, m_hasKeyboard);
    place();
}

void LayerWindow::makePopup(wl_surface *surface) {
    LayerWindow &parent = *parentOfPopup();
    const QRect frame = m_window.geometry();
    xdg_positioner *positioner = xdg_wm_base_create_positioner(m_link.windowBase());
    const QPoint place = frame.topLeft() - parent.m_window.geometry().topLeft();
    xdg_positioner_set_size(positioner, frame.width(), frame.height());
    xdg_positioner_set_anchor_rect(positioner, place.x(), place.y(), 1, 1);
    xdg_positioner_set_anchor(positioner, XDG_POSITIONER_ANCHOR_TOP_LEFT);
    xdg_positioner_set_gravity(positioner, XDG_POSITIONER_GRAVITY_BOTTOM_RIGHT);
    xdg_positioner_set_constraint_adjustment(positioner, XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_X |
                                                             XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_Y);
    m_popupSurface = m_link.onOwnQueue(
        m_link.windowBase(), [&](xdg_wm_base *base) { return xdg_wm_base_get_xdg_surface(base, surface); });
    xdg_surface_add_listener(m_popupSurface, &Listeners::popupSurface, this);
    m_popup = xdg_surface_get_popup(m_popupSurface, parent.m_popupSurface, positioner);
    xdg_popup_add_listener(m_popup, &Listeners::popup, this);
    xdg_positioner_destroy(positioner);
    if (parent.m_layer)
        zwlr_layer_surface_v1_get_popup(parent.m_layer, m_popup);
    if (wl_seat *seat = m_link.seat())
        xdg_popup_grab(m_popup, seat, m_link.inputSerial());
}

LayerWindow *LayerWindow::parentOfPopup() const {
    // A menu of a menu hangs on that.
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        LayerWindow *other = of(widget->windowHandle());
        if (other && other != this && other->m_popup && widget == QApplication::activePopupWidget())
            return other;
    }
    LayerWindow *owner = of(m_owner);
    return owner && owner->m_layer ? owner : nullptr;
}

void LayerWindow::place() {
    if (!m_layer)
        return;
    // A surface stays on the screen that it was made for.
    if (m_screen != m_window.screen())
        return remap();
    const QRect frame = m_window.geometry();
    const QPoint corner = frame.topLeft() - m_screen->geometry().topLeft();
    zwlr_layer_surface_v1_set_size(m_layer, std::uint32_t(frame.width()), std::uint32_t(frame.height()));
    zwlr_layer_surface_v1_set_anchor(m_layer,
                                     ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT);
    zwlr_layer_surface_v1_set_margin(m_layer, corner.y(), 0, 0, corner.x());
    if (m_isConfigured) {
        settle();
        commit();
    }
}

void LayerWindow::commit() {
    if (wl_surface *surface = WaylandLink::surfaceOf(m_window))
        wl_surface_commit(surface);
}

void LayerWindow::setKeyboard(bool has) {
    if (std::exchange(m_hasKeyboard, has) == has || !m_layer)
        return;
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer, has);
    commit();
}

void LayerWindow::remap() {
    wl_surface *surface = WaylandLink::surfaceOf(m_window);
    if (!surface || !m_window.isVisible())
        return;
    surfaceGone();
    wl_surface_attach(surface, nullptr, 0, 0);
    wl_surface_commit(surface);
    surfaceMade();
    m_isFresh = false;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->windowHandle() == &m_window)
            widget->repaint();
    }
}

void LayerWindow::reenterLayer() {
    if (!m_layer || m_link.layerShellVersion() < ZWLR_LAYER_SURFACE_V1_SET_LAYER_SINCE_VERSION)
        return;
    zwlr_layer_surface_v1_set_layer(m_layer, ZWLR_LAYER_SHELL_V1_LAYER_TOP);
    commit();
    zwlr_layer_surface_v1_set_layer(m_layer, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY);
    commit();
}

void LayerWindow::settle() {
    wl_surface *surface = WaylandLink::surfaceOf(m_window);
    if (m_settling || !surface)
        return;
    // Not a round trip: some compositors put their layers in order a moment after they have answered.
    m_settling = wl_surface_frame(surface);
    wl_callback_add_listener(m_settling, &Listeners::callback, this);
}

void LayerWindow::close() {
    if (m_popup) {
        // The user has turned away from the menu.
        QMetaObject::invokeMethod(this, [this] { m_window.close(); }, Qt::QueuedConnection);
        return;
    }
    // Its screen has gone. Qt learns of that too, and moves the window to another.
    surfaceGone();
    QTimer::singleShot(screenPatience, this, [this] {
        if (!m_layer)
            remap();
    });
}

} // namespace vantrell
