// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/BackdropMonitor.h"

#include "Panels/FloatingPanel.h"
#include "Panels/PillPanel.h"
#include "Platform/X11/X11StillCapture.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/ManualClock.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;

TEST(BackdropMonitorTest, seesWhetherTheScreenIsLightAndDoesNotWaverInBetween) {
    X11Painter painter;
    painter.openWindow({0, 0, 1200, 700}, "Backdrop");
    X11StillCapture stills;
    ManualClock clock;
    FloatingPanel panel{FloatingPanel::Options{}};
    panel.resizePanel({300, 60});
    panel.placePanel({300, 300});
    panel.showPanel();
    // Another panel right below it is dark as long as nobody tells it otherwise.
    PillPanel note;
    note.setText("Auto-stops at 20:00, your plan's recording limit");
    note.showBelow(panel.panelFrame());
    std::vector<bool> seen;
    BackdropMonitor monitor(panel, stills, clock, [&](bool isLight) { seen.push_back(isLight); });
    // What it sees when it looks next.
    const auto lookAt = [&](std::uint32_t rgb) {
        painter.fill({0, 0, 1200, 700}, rgb);
        painter.sync();
        EXPECT_EQ(clock.advanceToNextSleeper(), 500ms);
        EXPECT_TRUE(eventually([&] { return clock.sleeperCount() == 1; }));
    };
    monitor.start();
    EXPECT_TRUE(eventually([&] { return clock.sleeperCount() == 1; }));
    lookAt(0xf4f4f4);
    lookAt(0x959595);
    lookAt(0x202020);
    lookAt(0x959595);
    EXPECT_THAT(seen, ElementsAre(true, false));
    monitor.stop();
    EXPECT_EQ(clock.sleeperCount(), 0);
}

} // namespace

} // namespace vantrell::testing
