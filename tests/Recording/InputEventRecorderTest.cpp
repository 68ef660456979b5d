// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/InputEventRecorder.h"
#include "Recording/WindowFrameTracker.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::Field;

namespace vantrell::testing {

namespace {

/// The desktop's pointer, moved by the test.
class HandMovedPointer final : public InputMonitor {
public:
    std::expected<void, PlatformError> start(std::function<void(const PointerEvent &)> handler) override {
        if (refuses)
            return std::unexpected(PlatformError{"x11", 1, "XInputExtension is missing"});
        m_handler = std::move(handler);
        return {};
    }
    void stop() override { m_handler = nullptr; }
    std::optional<Point> pointerLocation() override { return location; }

    void send(PointerEvent::Kind kind, double hostTime, double deltaY = 0, bool momentum = false) {
        if (m_handler)
            m_handler({kind, hostTime, 0, deltaY, momentum});
    }
    void moveTo(double x, double y) {
        location = {x, y};
        send(PointerEvent::Kind::moved, movedAt);
    }

    Point location;
    /// When the server saw it move.
    double movedAt = 999;
    bool refuses = false;

private:
    std::function<void(const PointerEvent &)> m_handler;
};

class InputEventRecorderTest : public ::testing::Test {
protected:
    /// What came behind the pointer's place at the start.
    std::vector<RawEvent> eventsSinceTheStart() {
        auto events = recorder.stop();
        EXPECT_FALSE(events.empty());
        return {events.begin() + 1, events.end()};
    }

    HandMovedPointer pointer;
    ManualClock clock;
    InputEventRecorder recorder{pointer, clock, Display()};
};

TEST_F(InputEventRecorderTest, keepsClicksWithTheirTimeAndPlace) {
    recorder.start();
    pointer.location = {30, 40};
    pointer.send(PointerEvent::Kind::rightDown, 1000.25);
    recorder.liveCaptureRect = [] { return Rect{1, 2, 3, 4}; };
    pointer.send(PointerEvent::Kind::rightUp, 1000.5);
    EXPECT_THAT(eventsSinceTheStart(),
                ElementsAre(RawEvent{1000.25, InputEvent::Kind::down, {30, -40}, {}},
                            RawEvent{1000.5, InputEvent::Kind::up, {30, -40}, Rect{1, 2, 3, 4}}));
}

TEST_F(InputEventRecorderTest, thinsScrollsAndIgnoresInertia) {
    recorder.start();
    pointer.send(PointerEvent::Kind::scroll, 1000.0, 1);
    pointer.send(PointerEvent::Kind::scroll, 1000.1, 1);
    pointer.send(PointerEvent::Kind::scroll, 1000.2, 0);
    pointer.send(PointerEvent::Kind::scroll, 1000.3, 1, true);
    pointer.send(PointerEvent::Kind::scroll, 1000.4, 1);
    EXPECT_THAT(eventsSinceTheStart(),
                ElementsAre(Field(&RawEvent::hostTime, 1000.0), Field(&RawEvent::hostTime, 1000.4)));
}

TEST_F(InputEventRecorderTest, samplesAMovingPointerAtSixtyHertzAndARestingOneNever) {
    recorder.start();
    for (int i = 1; i <= 100; ++i) { // a 1000 Hz mouse for 100 ms
        pointer.moveTo(i, 0);
        clock.advance(1ms);
    }
    const size_t moves = eventsSinceTheStart().size();
    EXPECT_GE(moves, 5u);
    EXPECT_LE(moves, 7u);

    recorder.start();
    const size_t sleepsBefore = clock.requested().size();
    clock.advance(10s);
    EXPECT_EQ(clock.requested().size(), sleepsBefore);
    EXPECT_TRUE(eventsSinceTheStart().empty());
}

TEST_F(InputEventRecorderTest, recordsTheLastPlaceOfAQuickMove) {
    recorder.start();
    clock.advance(20ms);
    pointer.moveTo(1, 1);
    pointer.moveTo(2, 2);
    pointer.moveTo(3, 3);
    clock.advance(20ms);
    const auto events = eventsSinceTheStart();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events.front().hostTime, pointer.movedAt);
    EXPECT_EQ(events.back().location, (Point{3, -3}));
}

TEST_F(InputEventRecorderTest, tellsWhereARestingPointerIsAtTheStartAndAfterAPauseThatLeavesNothing) {
    pointer.location = {5, 5};
    const double startedAt = clock.hostNow();
    recorder.start();
    clock.advance(100ms);
    recorder.pause();
    pointer.send(PointerEvent::Kind::leftDown, 1001);
    pointer.moveTo(6, 6);
    pointer.moveTo(5, 5);
    clock.advance(100ms);
    const double resumedAt = clock.hostNow();
    recorder.resume();
    EXPECT_THAT(recorder.stop(), ElementsAre(RawEvent{startedAt, InputEvent::Kind::move, {5, -5}, {}},
                                             RawEvent{resumedAt, InputEvent::Kind::move, {5, -5}, {}}));
}

TEST_F(InputEventRecorderTest, recordsWithoutEventsWhenTheDesktopShowsNone) {
    LogCapture log;
    pointer.refuses = true;
    recorder.start();
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_TRUE(log.contains("input events not recorded: XInputExtension is missing"));
}

TEST(WindowFrameTracker, asksAtMostTenTimesASecondAndKeepsTheLastGoodAnswer) {
    ManualClock clock;
    int asked = 0;
    std::optional<Rect> bounds = Rect{1930, 30, 200, 100};
    WindowFrameTracker tracker(
        [&] {
            ++asked;
            return bounds;
        },
        {1920, 0}, {0, 0, 50, 50}, clock);
    EXPECT_EQ(tracker.currentRect(), (Rect{10, 30, 200, 100}));
    bounds = Rect{1940, 30, 200, 100};
    clock.advance(50ms);
    EXPECT_EQ(tracker.currentRect(), (Rect{10, 30, 200, 100}));
    clock.advance(60ms);
    EXPECT_EQ(tracker.currentRect(), (Rect{20, 30, 200, 100}));
    bounds.reset();
    clock.advance(1s);
    EXPECT_EQ(tracker.currentRect(), (Rect{20, 30, 200, 100}));
    EXPECT_EQ(asked, 3);
}

} // namespace
} // namespace vantrell::testing
