// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/MicrophoneMeter.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"

#include <gmock/gmock.h>

#include <thread>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

TEST(MicrophoneMeter, reportsThePeakAtMostTenTimesASecondUntilItsEnd) {
    ManualClock clock;
    std::vector<double> levels;
    auto meter = std::make_unique<MicrophoneMeter>(clock, [&](double level) { levels.push_back(level); });
    const auto take = [&](std::vector<float> samples) {
        std::thread([&] { meter->take(samples); }).join();
        settle();
    };
    take({0.25f, -0.5f});
    clock.advance(60ms);
    take({1.0f});
    clock.advance(60ms);
    take({-3.0f});
    clock.advance(100ms);
    take({});
    clock.advance(100ms);
    meter->take(std::vector<float>{0.75F});
    meter.reset(); // what is on its way is dropped
    settle();
    EXPECT_THAT(levels, ::testing::ElementsAre(0.5, 1.0, 0.0));
}

} // namespace
} // namespace vantrell::testing
