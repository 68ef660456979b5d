// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/X11PanelShell.h"

#include "Panels/DesktopLink.h"

#include <QScreen>
#include <QWidget>

namespace vantrell {

Qt::WindowFlags X11PanelShell::flags(Role role) const {
    return role == Role::overlay
               ? Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint
               : Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint |
                     Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint;
}

void X11PanelShell::adopt(QWidget &window, Role, QWidget *) {
    DesktopLink::instance().markAsOwn(DesktopLink::WindowId(window.winId()));
}

bool X11PanelShell::canFade() const {
    return DesktopLink::instance().isComposited();
}

QRect X11PanelShell::room(const QScreen &screen) const {
    return screen.availableGeometry();
}

void X11PanelShell::raise(QWidget &window) {
    window.raise();
}

void X11PanelShell::setShape(QWidget &window, const QRegion &visible, const QRegion &touchable) {
    DesktopLink::instance().setShape(DesktopLink::WindowId(window.internalWinId()), visible, touchable);
}

void X11PanelShell::sync() {
    DesktopLink::instance().sync();
}

} // namespace vantrell
