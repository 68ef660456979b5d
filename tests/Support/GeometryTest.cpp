// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Geometry.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(Geometry, intersectsAndUnitesWithEmptyAndNegativeRectangles) {
    const PixelRect left{-100, -50, 200, 100};
    const PixelRect right{50, 0, 200, 100};
    EXPECT_EQ(intersection(left, right), (PixelRect{50, 0, 50, 50}));
    EXPECT_EQ(united(left, right), (PixelRect{-100, -50, 350, 150}));
    EXPECT_TRUE(intersection(left, {100, 50, 10, 10}).isEmpty()); // touching is not overlapping
    EXPECT_EQ(united({}, right), right);
}

TEST(Geometry, cutsFractionsOfPixelsOffAtFractionalScales) {
    EXPECT_EQ(pixelSize({1001, 333}, 1.25), (PixelSize{1251, 416}));
    EXPECT_EQ(toPixels({-10.4, 10.5, 100, 50}, 1.5), (PixelRect{-16, 16, 150, 75}));
    EXPECT_EQ(toPoints({0, 0, 3840, 2160}, 1.5), (Rect{0, 0, 2560, 1440}));
}

TEST(Geometry, turnsTheVerticalAxisOverAndBack) {
    const Rect display{1920, -200, 1280, 720};
    EXPECT_EQ(flipped(display), (Rect{1920, -520, 1280, 720}));
    EXPECT_EQ(flipped(flipped(display)), display);
    // A point 10 below the display's upper edge stays 10 below it.
    EXPECT_EQ(flipped(display).maxY() - flipped(Point{1920, -190}).y, 10);
}

} // namespace
} // namespace vantrell::testing
