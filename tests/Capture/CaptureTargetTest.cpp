// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureTarget.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

const Display right{"DP-2", "DP-2", {1536, -100, 1280, 800}, {1920, -125, 1600, 1000}, 1.25, false};

TEST(CaptureTarget, measuresAreasFromTheDisplaysCornerInPoints) {
    const CaptureTarget area = CaptureTarget::area(right, {1930, -115, 125, 251});
    EXPECT_EQ(area.rect, (Rect{8, 8, 100, 200.8}));
    EXPECT_EQ(area.source, (PixelRect{1930, -115, 125, 251}));
    EXPECT_EQ(area.kind(), CaptureKind::area);
}

TEST(CaptureTarget, callsAnAreaOfTheDisplaysSizeADisplay) {
    EXPECT_EQ(CaptureTarget::wholeDisplay(right).kind(), CaptureKind::display);
    EXPECT_EQ(CaptureTarget::area(right, right.pixels).kind(), CaptureKind::display);
    WindowDescription window;
    window.pixels = right.pixels;
    const CaptureTarget full = CaptureTarget::ofWindow(right, window);
    EXPECT_EQ(full.kind(), CaptureKind::window);
    EXPECT_EQ(full.rect, (Rect{0, 0, 1280, 800}));
}

} // namespace
} // namespace vantrell::testing
