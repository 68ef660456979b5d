// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayDesktop.h"

#include "Panels/DesktopLink.h"
#include "Panels/PanelPlacement.h"
#include "Panels/PanelShell.h"
#include "Platform/DisplayLayout.h"

#include <QApplication>
#include <QWidget>

namespace vantrell {

QScreen *screenOf(const Display &display) {
    return screenOf(display.id, QPoint(int(display.frame.x), int(display.frame.y)));
}

bool showsThroughOverlay() {
    return PanelShell::instance().placesWindows() && DesktopLink::instance().isComposited();
}

PixelRect visibleOwnWindows(const std::vector<Display> &displays) {
    PixelRect all;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible())
            continue;
        const QRect frame = widget->geometry();
        for (const Display &display : displays) {
            const PixelRect place =
                inPixelsOf(display, {frame.x() - display.frame.x, frame.y() - display.frame.y,
                                     double(frame.width()), double(frame.height())});
            if (!place.isEmpty())
                all = united(all, place);
        }
    }
    return all;
}

} // namespace vantrell
