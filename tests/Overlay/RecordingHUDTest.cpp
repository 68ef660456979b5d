// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/RecordingHUD.h"

#include "Panels/DesktopLink.h"
#include "Platform/X11/X11StillCapture.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/Widgets/ScreenPointer.h"

#include <QAccessible>

#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(RecordingHUDStateTest, countsWithoutThePausesAndAsksForTheStopBeforeTheCap) {
    ManualClock clock;
    auto state = std::make_unique<RecordingHUDState>(clock, 1200, true);
    int stops = 0;
    state->onStop = [&] {
        ++stops;
        // As its owner does.
        state.reset();
    };
    state->startTimer();
    clock.advance(65s);
    EXPECT_DOUBLE_EQ(state->elapsedSeconds, 65);
    EXPECT_EQ(state->stopHelp(), "Stop recording (Super-Shift-9)");
    state->setHasStopKey(false);
    EXPECT_EQ(state->stopHelp(), "Stop recording");
    clock.advance(100ms);
    state->pause();
    EXPECT_NEAR(state->elapsedSeconds, 65.1, 1e-9);
    EXPECT_EQ(clock.sleeperCount(), 0);
    clock.advance(1h);
    EXPECT_NEAR(state->elapsedSeconds, 65.1, 1e-9);
    state->startTimer();
    clock.advance(1075s);
    EXPECT_TRUE(state->isNearCap());
    EXPECT_EQ(state->stopHelp(), "Auto-stops at 20:00, your plan's recording limit");
    clock.advance(59s);
    EXPECT_EQ(stops, 0);
    clock.advance(250ms);
    EXPECT_EQ(stops, 1);
    EXPECT_FALSE(state);
}

TEST(RecordingHUDStateTest, obeysACapThatArrivesLateAndIsSilentWhenItIsStopped) {
    ManualClock clock;
    RecordingHUDState state(clock, 1200, false);
    int stops = 0;
    state.onStop = [&] { ++stops; };
    state.startTimer();
    clock.advance(30s);
    state.setCap(10);
    clock.advance(250ms);
    EXPECT_EQ(stops, 1);
    state.startTimer();
    state.stop();
    clock.advance(1h);
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(timeLabel(1200), "20:00");
    EXPECT_EQ(timeLabel(65), "1:05");
    EXPECT_EQ(timeLabel(-1), "0:00");
}

class RecordingHUDTest : public ::testing::Test {
protected:
    QString described(const QString &name) const { return controlNamed(name)->accessibleDescription(); }

    const TemporaryFolder folder;
    Settings settings{folder / "settings.ini"};
    ManualClock clock;
    X11StillCapture stills;
    std::vector<std::string> calls;
    std::shared_ptr<RecordingHUDState> state = std::make_shared<RecordingHUDState>(clock, 1200, true);
    std::unique_ptr<RecordingHUD> hud =
        std::make_unique<RecordingHUD>(RecordingHUD::Services{stills, settings, clock}, state);
};

TEST_F(RecordingHUDTest, isWorkedByThePointerWhileSomebodyElseHasTheKeyboard) {
    X11Application editor({.pixels = {100, 50, 900, 600}});
    xdotool({"mousemove", "150", "150", "click", "1"});
    ASSERT_TRUE(eventually([&] { return DesktopLink::instance().focusedWindow() == editor.window(); }));
    state->onPauseToggle = [&] {
        calls.push_back("pause");
        state->isPaused = !state->isPaused;
    };
    state->onDelete = [&] { calls.push_back("delete"); };
    // The owner drops the HUD while its button is pressed.
    state->onStop = [&] {
        calls.push_back("stop");
        hud.reset();
    };
    hud->show({});
    clickOn(*controlNamed("Pause"));
    ASSERT_TRUE(eventually([] { return controlNamed("Resume") != nullptr; }));
    // One click asks; it must be followed by another one.
    clickOn(*controlNamed("Delete"));
    ASSERT_TRUE(eventually([&] { return !described("Delete").isEmpty(); }));
    EXPECT_THAT(calls, ElementsAre("pause"));
    clickOn(*controlNamed("Delete"));
    ASSERT_TRUE(eventually([&] { return calls.size() == 2; }));
    EXPECT_EQ(DesktopLink::instance().focusedWindow(), editor.window());
    clickOn(*controlNamed("Stop"));
    ASSERT_TRUE(eventually([this] { return !hud; }));
    EXPECT_THAT(calls, ElementsAre("pause", "delete", "stop"));
    EXPECT_EQ(controlNamed("Stop"), nullptr);
}

TEST_F(RecordingHUDTest, tellsTimeLimitAndLevelToThoseWhoCannotSeeIt) {
    state->elapsedSeconds = 187;
    state->micLevel = 0.42;
    hud->show({});
    EXPECT_EQ(described("Stop"), "3:07. Stop recording (Super-Shift-9)");
    QAccessibleInterface *meter = QAccessible::queryAccessibleInterface(controlNamed("Microphone level"));
    ASSERT_TRUE(meter && meter->valueInterface());
    EXPECT_EQ(meter->valueInterface()->currentValue().toInt(), 42);
    state->elapsedSeconds = 1141;
    EXPECT_THAT(described("Stop").toStdString(), HasSubstr("Auto-stops at 20:00"));
    EXPECT_TRUE(controlNamed("Auto-stops at 20:00, your plan's recording limit"));
    QAccessibleInterface *pause = QAccessible::queryAccessibleInterface(controlNamed("Pause"));
    state->onPauseToggle = [&] { calls.push_back("pause"); };
    pause->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(calls, ElementsAre("pause"));
}

} // namespace

} // namespace vantrell::testing
