// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CountdownPanel.h"

#include "Panels/DesktopLink.h"
#include "Support/SystemClock.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/Widgets/ScreenPointer.h"

#include <QGuiApplication>
#include <QScreen>

#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

/// The part of the screen that the application fills, in the middle of which the countdown is.
QImage screen() {
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, 300, 150, 600, 400)
        .toImage()
        .convertToFormat(QImage::Format_RGB888);
}

class CountdownTest : public ::testing::Test {
protected:
    CountdownTest() {
        before.fill(QColor(0xff8800));
        EXPECT_TRUE(eventually([this] { return screen() == before; }));
    }
    Task<bool> start() {
        auto task = countDown(3, {}, clock, stop.get_token());
        EXPECT_TRUE(eventually([] { return controlNamed("Recording starts in 3") != nullptr; }));
        EXPECT_TRUE(eventually([this] { return screen() != before; }));
        return task;
    }

    /// Time passes again only while the last frames are waited for.
    bool finished(Task<bool> task) {
        EXPECT_TRUE(eventually([&] { return !controlNamed("Recording starts in 3") || task.isReady(); }));
        return runTask(std::move(task), clock);
    }

    ManualClock clock;
    std::stop_source stop;
    X11Application editor{{.pixels = {100, 50, 900, 600}, .colour = 0xff8800}};
    QImage before{600, 400, QImage::Format_RGB888};
};

TEST_F(CountdownTest, showsANumberASecond) {
    auto task = start();
    for (const QString number : {"2", "1"}) {
        clock.advance(1s);
        EXPECT_TRUE(controlNamed("Recording starts in " + number));
        EXPECT_FALSE(task.isReady());
    }
    EXPECT_TRUE(runTask(std::move(task), clock));
}

TEST_F(CountdownTest, leavesNothingOnTheScreen) {
    for (const bool isBlended : {false, true}) {
        std::unique_ptr<ChildProcess> compositor;
        if (isBlended) {
            compositor = std::make_unique<ChildProcess>(
                std::vector<std::string>{"picom", "--backend", "xrender", "--config", "/dev/null"});
            ASSERT_TRUE(eventually([] { return DesktopLink::instance().isComposited(); }));
            ASSERT_TRUE(eventually([this] { return screen() == before; }));
        }
        // In real time: the screen has no other.
        SystemClock realClock;
        auto task = countDown(1, {}, realClock, stop.get_token());
        ASSERT_TRUE(eventually([this] { return screen() != before; }));
        EXPECT_TRUE(runTask(std::move(task)));
        EXPECT_EQ(screen(), before) << "blended: " << isBlended;
    }
}

TEST_F(CountdownTest, isCancelledOrEndedEarlyByKeysThatTheApplicationDoesNotGet) {
    xdotool({"mousemove", "150", "150", "click", "1"});
    ASSERT_TRUE(eventually([this] { return DesktopLink::instance().focusedWindow() == editor.window(); }));
    const auto endedBy = [this](const std::vector<std::string> &act) {
        auto task = start();
        EXPECT_EQ(DesktopLink::instance().focusedWindow(), editor.window());
        xdotool(act);
        return finished(std::move(task));
    };
    EXPECT_FALSE(endedBy({"key", "Escape"}));
    EXPECT_TRUE(endedBy({"key", "Return"}));
    EXPECT_FALSE(endedBy({"mousemove", "600", "350", "click", "1"}));
    auto task = start();
    stop.request_stop();
    EXPECT_FALSE(finished(std::move(task)));
    EXPECT_EQ(controlNamed("Recording starts in 3"), nullptr);
}

} // namespace

} // namespace vantrell::testing
