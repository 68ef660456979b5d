// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastClock.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

constexpr std::int64_t milliseconds = 1'000'000;

TEST(CastClock, takesTheCompositorsTimesAndPutsOthersOnTheHostClock) {
    CastClock own;
    EXPECT_DOUBLE_EQ(own.hostTime(99'960 * milliseconds, 100), 99.960);
    // One that says when it will be seen has not been seen before it came.
    EXPECT_DOUBLE_EQ(own.hostTime(100'016 * milliseconds, 100.01), 100.01);
    EXPECT_DOUBLE_EQ(own.hostTime(std::nullopt, 100.02), 100.02);
    // Never back.
    EXPECT_DOUBLE_EQ(own.hostTime(99'000 * milliseconds, 100.03), 100.02);

    // A clock that began with the stream; the second picture was quicker than the first.
    CastClock other;
    EXPECT_DOUBLE_EQ(other.hostTime(0, 500), 500);
    EXPECT_DOUBLE_EQ(other.hostTime(100 * milliseconds, 500.08), 500.08);
    EXPECT_NEAR(other.hostTime(200 * milliseconds, 500.25), 500.18, 1e-9);
    // It begins anew.
    EXPECT_DOUBLE_EQ(other.hostTime(0, 900), 900);
}

} // namespace

} // namespace vantrell::testing
