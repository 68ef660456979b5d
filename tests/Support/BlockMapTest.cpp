// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/BlockMap.h"

#include <gtest/gtest.h>

#include <random>

namespace vantrell::testing {

namespace {

TEST(BlockMap, marksEveryBlockThatARectangleTouchesAndIgnoresWhatLiesOutside) {
    BlockMap map({100, 50});
    EXPECT_EQ(map.columns(), 7);
    EXPECT_EQ(map.rows(), 4);
    map.mark({15, 15, 2, 2});
    EXPECT_EQ(map.count(), 4);
    map.mark({-40, -40, 41, 41});
    EXPECT_EQ(map.count(), 4);
    map.mark({200, 0, 50, 50});
    map.mark({0, 60, 10, 10});
    map.mark({10, 10, 0, 5});
    EXPECT_EQ(map.count(), 4);
    map.mark({99, 49, 500, 500});
    EXPECT_TRUE(map.isMarked(6, 3));
}

TEST(BlockMap, coversItsMarksWithDisjointRectanglesCutToThePicture) {
    std::mt19937 random(1);
    for (int round = 0; round < 50; ++round) {
        BlockMap map({205, 117});
        for (int i = 0; i < 5; ++i)
            map.mark(
                {int(random() % 220) - 10, int(random() % 130) - 10, int(random() % 60), int(random() % 60)});
        BlockMap covered({205, 117});
        int area = 0;
        int markedArea = 0;
        for (const PixelRect &rect : map.rectangles(1000)) {
            EXPECT_EQ(rect.x % 16, 0);
            EXPECT_EQ(rect.y % 16, 0);
            EXPECT_TRUE(rect.right() % 16 == 0 || rect.right() == 205);
            EXPECT_TRUE(rect.bottom() % 16 == 0 || rect.bottom() == 117);
            area += rect.width * rect.height;
            covered.mark(rect);
        }
        for (int row = 0; row < map.rows(); ++row)
            for (int column = 0; column < map.columns(); ++column)
                if (map.isMarked(column, row))
                    markedArea += std::min(16, 205 - column * 16) * std::min(16, 117 - row * 16);
        EXPECT_EQ(covered.marks(), map.marks());
        EXPECT_EQ(area, markedArea);
    }
}

TEST(BlockMap, takesTheBoxOfManyScatteredMarks) {
    BlockMap map({320, 320});
    for (int i = 1; i < 19; i += 2)
        map.mark({i * 16, i * 16, 1, 1});
    const auto rects = map.rectangles(4);
    ASSERT_EQ(rects.size(), 1u);
    EXPECT_EQ(rects.front(), (PixelRect{16, 16, 17 * 16, 17 * 16}));
}

} // namespace
} // namespace vantrell::testing
