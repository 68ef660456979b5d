// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/SidecarEvents.h"

#include <gtest/gtest.h>

#include <ostream>

namespace vantrell {

void PrintTo(const InputEvent &event, std::ostream *out) {
    *out << spelling(event.kind) << "@" << event.t << " (" << event.x << ", " << event.y << ")";
}

namespace testing {

namespace {

using Kind = InputEvent::Kind;

constexpr double anchor = 500;
const Rect screen{1920, -200, 1280, 720};
const Rect area{100, 50, 400, 300};

/// An event at that place in the capture area.
RawEvent at(double seconds, Kind kind, double x, double y) {
    return {anchor + seconds, kind, flipped(Point{screen.x + area.x + x, screen.y + area.y + y}), {}};
}

std::vector<InputEvent> mapped(const std::vector<RawEvent> &raw, double durationMs = 10000) {
    return sidecarEvents(raw, screen, area, {{"", anchor, durationMs}});
}

TEST(SidecarEvents, placesClicksInTheAreaWithAMargin) {
    EXPECT_EQ(mapped({at(1, Kind::down, 20.26, 30), at(1.1, Kind::up, -10, 305), at(2, Kind::scroll, -13, 10),
                      at(3, Kind::down, 10, 313)}),
              (std::vector<InputEvent>{{1000, Kind::down, 20.3, 30}, {1100, Kind::up, -10, 305}}));
}

TEST(SidecarEvents, countsEventsJustBeforeTheFirstFrameAtZero) {
    EXPECT_EQ(mapped({at(-0.11, Kind::down, 1, 1), at(-0.09, Kind::down, 2, 2), at(10.01, Kind::down, 3, 3)}),
              (std::vector<InputEvent>{{0, Kind::down, 2, 2}}));
}

TEST(SidecarEvents, saysOnceThatThePointerLeft) {
    EXPECT_EQ(mapped({at(0, Kind::move, -5, 10), at(1, Kind::move, 5, 10), at(2, Kind::move, 450, -8),
                      at(3, Kind::move, 460, 10), at(4, Kind::move, 400, 300), at(5, Kind::move, 5, 310)}),
              (std::vector<InputEvent>{{1000, Kind::move, 5, 10},
                                       {2000, Kind::exit, 400, 0},
                                       {4000, Kind::move, 400, 300},
                                       {5000, Kind::exit, 5, 300}}));
}

TEST(SidecarEvents, putsSegmentsEndToEndAndKeepsTheInsideFlagAcrossThem) {
    const std::vector<RecordedSegment> segments{{"", anchor, 2000}, {"", anchor + 10, 1000.5}};
    const std::vector<RawEvent> raw{at(1, Kind::move, 5, 5), at(5, Kind::down, 5, 5),
                                    at(10.5, Kind::move, -20, 5), at(10.6, Kind::down, 7, 7)};
    EXPECT_EQ(sidecarEvents(raw, screen, area, segments),
              (std::vector<InputEvent>{
                  {1000, Kind::move, 5, 5}, {2500, Kind::exit, 0, 5}, {2600, Kind::down, 7, 7}}));
}

TEST(SidecarEvents, followsAWindowThatMovedAndGrew) {
    RawEvent event = at(1, Kind::down, 0, 0);
    event.captureRect = Rect{300, 100, 800, 600};
    event.location = flipped(Point{screen.x + 300 + 80, screen.y + 100 + 60});
    EXPECT_EQ(mapped({event}), (std::vector<InputEvent>{{1000, Kind::down, 40, 30}}));

    event.captureRect = Rect{300, 100, 0, 0}; // nothing to scale by
    EXPECT_TRUE(mapped({event}).empty());
}

} // namespace
} // namespace testing
} // namespace vantrell
