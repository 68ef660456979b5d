// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Alert.h"

#include "Panels/DesktopLink.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Widgets/ScreenPointer.h"

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

TEST(AlertTest, takesTheKeyboardAndIsAnsweredByKeysClicksAndTheEndOfWaiting) {
    const auto answerTo = [](const std::function<void(std::stop_source &)> &act) {
        std::stop_source stop;
        auto task = ask("Move the application?", "It runs from a folder that goes away.",
                        {"Move", "Later", "No"}, stop.get_token());
        EXPECT_TRUE(eventually([] {
            QWidget *button = controlNamed("Move");
            return button && DesktopLink::instance().focusedWindow() == button->window()->winId();
        }));
        // The window manager may still be busy with the window: what it takes away is pressed again.
        for (int attempt = 0; attempt < 5 && !task.isReady(); ++attempt) {
            act(stop);
            eventually([&task] { return task.isReady(); }, std::chrono::seconds(5));
        }
        EXPECT_TRUE(task.isReady());
        stop.request_stop();
        return runTask(std::move(task));
    };
    EXPECT_EQ(answerTo([](auto &) { xdotool({"key", "Return"}); }), 0);
    EXPECT_EQ(answerTo([](auto &) { clickOn(*controlNamed("Later")); }), 1);
    EXPECT_EQ(answerTo([](auto &) { xdotool({"key", "Escape"}); }), 2);
    EXPECT_EQ(answerTo([](auto &stop) { stop.request_stop(); }), 2);
    EXPECT_EQ(controlNamed("Move"), nullptr);
}

} // namespace

} // namespace vantrell::testing
