// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11InputMonitor.h"

#include "Support/SystemClock.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using ::testing::ElementsAre;

namespace vantrell::testing {

namespace {

using Kind = PointerEvent::Kind;

/// What a monitor reports on a display of its own.
class X11InputMonitorTest : public ::testing::Test {
protected:
    void start(Clock &with) {
        monitor = std::make_unique<X11InputMonitor>(with);
        const auto started = monitor->start([this](const PointerEvent &event) { events.push_back(event); });
        ASSERT_TRUE(started) << started.error().message;
    }

    void xdotool(std::vector<std::string> words) {
        words.insert(words.begin(), "xdotool");
        ASSERT_EQ(session.run(words), 0);
    }

    std::vector<Kind> kinds(bool withMoves = true) const {
        std::vector<Kind> kinds;
        for (const PointerEvent &event : events) {
            if (withMoves || event.kind != Kind::moved)
                kinds.push_back(event.kind);
        }
        return kinds;
    }

    /// Waits until the last event is of that kind.
    bool endsWith(Kind kind) {
        return eventually([&] { return !events.empty() && events.back().kind == kind; });
    }

    X11Session session;
    SystemClock systemClock;
    ManualClock clock;
    std::vector<PointerEvent> events;
    std::unique_ptr<X11InputMonitor> monitor;
};

TEST_F(X11InputMonitorTest, reportsBothButtonsAndEachNotchOnceWithTheTimeItHappened) {
    start(systemClock);
    const double before = systemClock.hostNow();
    xdotool({"click", "1", "click", "2", "click",     "4", "click", "5",   "click",   "6",
             "click", "7", "click", "8", "mousedown", "3", "sleep", "0.1", "mouseup", "3"});
    // This program was busy meanwhile: what waits in the socket keeps its own time.
    ASSERT_TRUE(endsWith(Kind::rightUp));

    EXPECT_THAT(kinds(), ElementsAre(Kind::leftDown, Kind::leftUp, Kind::scroll, Kind::scroll, Kind::scroll,
                                     Kind::scroll, Kind::rightDown, Kind::rightUp));
    EXPECT_EQ(Point(events[2].deltaX, events[2].deltaY), (Point{0, 1}));
    EXPECT_EQ(Point(events[3].deltaX, events[3].deltaY), (Point{0, -1}));
    EXPECT_EQ(Point(events[4].deltaX, events[4].deltaY), (Point{1, 0}));
    EXPECT_EQ(Point(events[5].deltaX, events[5].deltaY), (Point{-1, 0}));
    EXPECT_GE(events.front().hostTime, before - 0.001);
    EXPECT_NEAR(events[7].hostTime - events[6].hostTime, 0.1, 0.05);
    EXPECT_LE(events[7].hostTime, systemClock.hostNow());
}

TEST_F(X11InputMonitorTest, understandsButtonsThatAreExchangedForALeftHand) {
    start(systemClock);
    ASSERT_EQ(session.run({"xmodmap", "-e", "pointer = 3 2 1 4 5 6 7 8 9 10"}), 0);
    xdotool({"click", "1"});
    ASSERT_TRUE(endsWith(Kind::rightUp));
    EXPECT_THAT(kinds(), ElementsAre(Kind::rightDown, Kind::rightUp));
}

TEST_F(X11InputMonitorTest, reportsAFastMouseOnceAFrameAndMissesNotWhereItStops) {
    start(clock);
    xdotool({"mousemove_relative", "--", "-50", "0"});
    ASSERT_TRUE(endsWith(Kind::moved));
    for (int i = 0; i < 20; ++i)
        xdotool({"mousemove_relative", "3", "1"});
    settle();
    EXPECT_EQ(events.size(), 1u);
    EXPECT_EQ(clock.sleeperCount(), 2);

    clock.advance(16ms);
    EXPECT_EQ(events.size(), 2u);
    EXPECT_EQ(monitor->pointerLocation(), (Point{320 - 50 + 60, 240 + 20}));

    // At rest nothing waits but the look for a pointer that jumps.
    clock.advance(16ms);
    EXPECT_EQ(events.size(), 2u);
    EXPECT_EQ(clock.sleeperCount(), 1);

    xdotool({"mousemove_relative", "1", "0"});
    EXPECT_TRUE(eventually([&] { return events.size() == 3; }));
}

TEST_F(X11InputMonitorTest, tellsOfButtonsAtOnceWhileMotionRests) {
    start(clock);
    xdotool({"mousemove_relative", "5", "0"});
    ASSERT_TRUE(endsWith(Kind::moved));
    xdotool({"mousemove_relative", "5", "0", "mousedown", "1"});
    ASSERT_TRUE(endsWith(Kind::leftDown));
    EXPECT_THAT(kinds(), ElementsAre(Kind::moved, Kind::moved, Kind::leftDown));
    EXPECT_EQ(monitor->pointerLocation(), (Point{330, 240}));
}

TEST_F(X11InputMonitorTest, seesAPointerThatAProgramSetsElsewhereBeforeTheClickThereAndWithoutOne) {
    start(clock);
    xdotool({"mousemove", "100", "70", "click", "1"});
    ASSERT_TRUE(endsWith(Kind::leftUp));
    EXPECT_THAT(kinds(), ElementsAre(Kind::moved, Kind::leftDown, Kind::leftUp));
    EXPECT_EQ(monitor->pointerLocation(), (Point{100, 70}));
    clock.advance(16ms);
    settle();
    xdotool({"mousemove", "200", "170"});
    settle();
    EXPECT_EQ(events.size(), 3u);
    clock.advance(100ms);
    EXPECT_EQ(kinds().back(), Kind::moved);
}

TEST_F(X11InputMonitorTest, sleepsWhileThePointerRestsAndWhateverIsTyped) {
    start(systemClock);
    settle();
    int wakeUps = 0;
    QEventLoop loop;
    const auto counting = QObject::connect(QAbstractEventDispatcher::instance(),
                                           &QAbstractEventDispatcher::awake, [&] { ++wakeUps; });
    QTimer::singleShot(500ms, &loop, &QEventLoop::quit);
    ChildProcess typing({"xdotool", "key", "--delay", "5", "s", "e", "c", "r", "e", "t", "Return"});
    loop.exec();
    QObject::disconnect(counting);
    EXPECT_FALSE(typing.isRunning());
    // The timer of this test and five looks for a pointer that jumps are among them; fourteen key events went
    // by.
    EXPECT_LE(wakeUps, 11);
    EXPECT_TRUE(events.empty());
}

TEST_F(X11InputMonitorTest, endsQuietlyWithTheServer) {
    LogCapture log;
    start(systemClock);
    session.kill();
    EXPECT_TRUE(eventually([&] { return log.contains("input events end: "); }));
    EXPECT_EQ(monitor->pointerLocation(), std::nullopt);
    settle();
    EXPECT_EQ(log.count("input events end: "), 1);

    const auto again = monitor->start([](const PointerEvent &) {});
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().message, "There is no display to record: no X server answers");
}

TEST_F(X11InputMonitorTest, canBeStoppedByItsOwnHandlerAndStartedAgain) {
    monitor = std::make_unique<X11InputMonitor>(systemClock);
    int seen = 0;
    ASSERT_TRUE(monitor->start([&](const PointerEvent &) {
        ++seen;
        monitor->stop();
    }));
    xdotool({"click", "1"});
    ASSERT_TRUE(eventually([&] { return seen == 1; }));
    settle();
    EXPECT_EQ(seen, 1);
    start(systemClock);
    xdotool({"click", "3"});
    EXPECT_TRUE(endsWith(Kind::rightUp));
}

} // namespace
} // namespace vantrell::testing
