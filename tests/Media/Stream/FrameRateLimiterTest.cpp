// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/FrameRateLimiter.h"

#include <gtest/gtest.h>

#include <random>

namespace vantrell::testing {

namespace {

TEST(FrameRateLimiter, losesNoFrameOfASourceThatRunsAtTheLimitAndJitters) {
    FrameRateLimiter limiter(60);
    std::mt19937 random(5);
    for (int i = 0; i < 1000; ++i) {
        const double now = 100 + i / 60.0 + double(random() % 8000) * 1e-6;
        EXPECT_LE(limiter.nextAllowed(), now) << i;
        limiter.frameTaken(now);
    }
}

TEST(FrameRateLimiter, keepsTheMeanOfAFastSourceAtTheLimit) {
    FrameRateLimiter limiter(60);
    int taken = 0;
    for (int i = 0; i < 10 * 240; ++i) {
        const double now = 100 + i / 240.0;
        if (limiter.nextAllowed() <= now) {
            limiter.frameTaken(now);
            ++taken;
        }
    }
    EXPECT_NEAR(taken, 600, 4);
}

} // namespace
} // namespace vantrell::testing
