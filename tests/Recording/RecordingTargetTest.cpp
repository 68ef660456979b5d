// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingTarget.h"
#include "Recording/DiskSpace.h"

#include <gtest/gtest.h>

namespace vantrell::testing {
namespace {

const Display right{"DP-2", "DP-2", {1536, -100, 1280, 800}, {1920, -125, 1600, 1000}, 1.25, false};

TEST(RecordingTarget, measuresAreasFromTheDisplaysCornerInPoints) {
    const RecordingTarget area = RecordingTarget::area(right, {1930, -115, 125, 251});
    EXPECT_EQ(area.rect, (Rect{8, 8, 100, 200.8}));
    EXPECT_EQ(area.source, (PixelRect{1930, -115, 125, 251}));
    EXPECT_STREQ(area.kind(), "region");
}

TEST(RecordingTarget, callsAnAreaOfTheDisplaysSizeADisplay) {
    EXPECT_STREQ(RecordingTarget::wholeDisplay(right).kind(), "display");
    EXPECT_STREQ(RecordingTarget::area(right, right.pixels).kind(), "display");
    WindowDescription window;
    window.frame = {1536, -100, 1280, 800};
    const RecordingTarget full = RecordingTarget::ofWindow(right, window);
    EXPECT_STREQ(full.kind(), "window");
    EXPECT_EQ(full.rect, (Rect{0, 0, 1280, 800}));
}

TEST(DiskSpace, needsTwoGigabytesAndPassesWhenNobodyCanTell) {
    EXPECT_TRUE(isEnoughToRecord(2'000'000'000));
    EXPECT_FALSE(isEnoughToRecord(1'999'999'999));
    EXPECT_TRUE(checkFreeDiskSpace("/nowhere/at/all"));
    EXPECT_EQ(description(RecordingError::lowDiskSpace),
              "Not enough free disk space to record (2 GB needed)");
}

} // namespace
} // namespace vantrell::testing
