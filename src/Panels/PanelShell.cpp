// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelShell.h"

#include "Panels/WaylandLink.h"
#include "Panels/WaylandPanelShell.h"
#include "Panels/X11PanelShell.h"

#include <QCoreApplication>

#include <memory>

namespace vantrell {

void PanelShell::prepare() {
    // Windows that bypass the window manager get no role of Qt's, and windows stay where they were put. X11
    // does both of itself.
    qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
    qputenv("QT_WAYLAND_DISABLE_FIXED_POSITIONS", "1");
}

PanelShell &PanelShell::instance() {
    static const std::unique_ptr<PanelShell> shell = []() -> std::unique_ptr<PanelShell> {
        // A menu is its panel's child and a window: Qt would make windows of the panel's controls too, which
        // then no longer learn where the pointer is.
        QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
        if (WaylandLink *wayland = WaylandLink::instance())
            return std::make_unique<WaylandPanelShell>(*wayland);
        return std::make_unique<X11PanelShell>();
    }();
    return *shell;
}

void PanelShell::setInPicture(const QRegion &region) {
    const QRegion now = keepsOutOfPictures() ? QRegion() : region;
    if (std::exchange(m_inPicture, now) != now)
        m_picture.notify();
}

} // namespace vantrell
