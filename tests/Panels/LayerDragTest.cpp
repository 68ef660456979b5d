// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerDrag.h"

#include "TestSupport/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

/// A compositor that tells the pointer's place in a surface in one of the two ways, while a button is held.
QPoint cornerAfterDrag(LayerDrag &drag, bool countsFromPress, QPoint way, int steps) {
    const QPoint start(100, 100), taken(20, 10);
    QPoint corner = start;
    for (int step = 1; step <= steps; ++step) {
        const QPoint pointer = start + taken + way * step / steps;
        PanelShell::Drag places;
        places.windowAtPress = start;
        places.pressedInside = taken;
        places.nowInside = pointer - (countsFromPress ? start : corner);
        corner = drag.place(corner, places, true).value_or(corner);
    }
    return corner;
}

TEST(LayerDrag, followsThePointerAsTheCompositorCounts) {
    for (const char *desktop : {"KDE", "sway"}) {
        const ScopedEnvironment session("XDG_CURRENT_DESKTOP", desktop);
        LayerDrag drag;
        EXPECT_EQ(cornerAfterDrag(drag, desktop == std::string("sway"), {300, -60}, 7), QPoint(400, 40));
    }
}

TEST(LayerDrag, waitsUntilTheSurfaceIsWhereItWasPut) {
    const ScopedEnvironment session("XDG_CURRENT_DESKTOP", "KDE");
    LayerDrag drag;
    EXPECT_FALSE(drag.place({100, 100}, {{100, 100}, {}, {20, 10}, {}, {30, 10}}, false));
    EXPECT_EQ(drag.place({100, 100}, {{100, 100}, {}, {20, 10}, {}, {30, 10}}, true), QPoint(110, 100));
}

} // namespace
} // namespace vantrell::testing
