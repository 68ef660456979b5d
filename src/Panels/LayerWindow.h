// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/PanelShell.h"

#include <QObject>
#include <QPointer>
#include <QWindow>

#include <cstdint>
#include <functional>
#include <utility>

struct wl_callback;
struct wl_surface;
struct xdg_popup;
struct xdg_surface;
struct zwlr_layer_surface_v1;

namespace vantrell {

class WaylandLink;

/// One window's part in the layer shell: gives each surface that Qt makes for the window its role before Qt
/// draws on it, and follows the window's geometry. Qt gives windows that bypass the window manager no role
/// itself. Main thread; owned by the window.
class LayerWindow : public QObject {
    Q_OBJECT

public:
    /// Follows that window, which bypasses the window manager and is not on the screen yet.
    LayerWindow(QWindow &window, PanelShell::Role role, WaylandLink &link);
    ~LayerWindow() override;

    /// The one of the window; null when it has none.
    static LayerWindow *of(const QWindow *window);

    /// The panel that a menu opens from.
    void setOwner(QWindow *owner) { m_owner = owner; }
    void setKeyboard(bool has);
    bool hasKeyboard() const { return m_hasKeyboard; }
    /// On the screen as a surface of its own, not as another's menu.
    bool isLayer() const { return m_layer; }
    /// Runs that once, after the next button that is let go over it has had its effect.
    void afterClick(std::function<void()> action) { m_afterClick = std::move(action); }
    /// Leaves the layer for a moment: some compositors stack anew what comes into one.
    void reenterLayer();
    /// Leaves the screen for a moment, as a window that is opened.
    void remap();
    /// It has come onto the screen since this was asked last.
    bool takeFresh() { return std::exchange(m_isFresh, false); }
    /// False while the compositor has not yet done what was asked of it before.
    bool isSettled() const { return !m_settling; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void surfaceMade();
    void surfaceGone();

private:
    struct Listeners;

    void watchSurface();
    void makeLayer(wl_surface *surface);
    void makePopup(wl_surface *surface);
    void place();
    void commit();
    void settle();
    void close();
    LayerWindow *parentOfPopup() const;

    QWindow &m_window;
    const PanelShell::Role m_role;
    WaylandLink &m_link;
    QPointer<QWindow> m_owner;
    zwlr_layer_surface_v1 *m_layer = nullptr;
    xdg_surface *m_popupSurface = nullptr;
    xdg_popup *m_popup = nullptr;
    wl_callback *m_settling = nullptr;
    bool m_isConfigured = false;
    bool m_isFresh = false;
    bool m_hasKeyboard = false;
    std::function<void()> m_afterClick;
    /// The screen that the surface is bound to.
    QPointer<QScreen> m_screen;
};

} // namespace vantrell
