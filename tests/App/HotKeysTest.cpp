// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/HotKeys.h"

#include "Platform/X11/X11HotKeys.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RunTask.h"

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

using Action = HotKeys::Action;
using ::testing::ElementsAre;

TEST(HotKeys, workButForTheOneThatAnotherProgramHolds) {
    const X11Session session;
    const auto other = X11HotKeys::create();
    ASSERT_TRUE(other && (*other)->grab(HotKeyBackend::Key::digit8, [] {}));
    LogCapture log;
    const auto backend = X11HotKeys::create();
    ASSERT_TRUE(backend);
    std::vector<Action> taken;
    auto hotKeys = std::make_unique<HotKeys>(**backend);
    hotKeys->install([&](Action action) { taken.push_back(action); });
    EXPECT_THAT(hotKeys->registeredHotKeys(), ElementsAre(Action::captureArea, Action::toggleRecording));
    ASSERT_EQ(hotKeys->failedHotKeys().size(), 1u);
    EXPECT_EQ(hotKeys->failedHotKeys().at(Action::captureWindow).description(),
              "Another program uses Super+Shift+8");
    EXPECT_TRUE(log.contains("HotKeys: registration failed for captureWindow (status 10)"));

    const std::vector<std::string> keys{"xdotool",       "key", "super+shift+9", "key",
                                        "super+shift+8", "key", "super+shift+7"};
    ASSERT_EQ(session.run(keys), 0);
    ASSERT_TRUE(eventually([&] { return taken.size() == 2; }));
    EXPECT_THAT(taken, ElementsAre(Action::toggleRecording, Action::captureArea));
    hotKeys.reset();
    ASSERT_EQ(session.run(keys), 0);
    settle();
    EXPECT_EQ(taken.size(), 2u);
}

} // namespace
} // namespace vantrell::testing
