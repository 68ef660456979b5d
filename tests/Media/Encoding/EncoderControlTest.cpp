// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/CameraQuantizer.h"
#include "Media/Encoding/EncoderLoad.h"
#include "Media/Encoding/KeyFrameSchedule.h"
#include "Media/Encoding/QuantizerControl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace vantrell::testing {

namespace {

TEST(KeyFrameSchedule, comesOftenWhenMuchMovesAndSeldomWhenLittleDoes) {
    KeyFrameSchedule busy;
    KeyFrameSchedule calm;
    EXPECT_TRUE(busy.isDue(0));
    int busyKeys = 0;
    int calmKeys = 0;
    for (int i = 0; i < 60 * 60; ++i) {
        const double now = i / 60.0;
        const bool busyKey = busy.isDue(now);
        busyKeys += busyKey;
        busy.frameEncoded(now, busyKey ? 200000 : 20000, busyKey);
        if (i % 30 == 0) {
            const bool calmKey = calm.isDue(now);
            calmKeys += calmKey;
            calm.frameEncoded(now, calmKey ? 200000 : 100, calmKey);
        }
    }
    EXPECT_EQ(busyKeys, 15);
    EXPECT_EQ(calmKeys, 1);
    EXPECT_TRUE(calm.isDue(60));
}

TEST(EncoderLoad, asksForSlicesBeforePicturesAreLostAndNotForAHiccup) {
    constexpr double interval = 1.0 / 60;
    EncoderLoad load(2);
    double now = 100;
    double free = now;
    // Pictures come at 60 Hz and are encoded one after the other; how late the last one was.
    const auto encode = [&](int pictures, double each) {
        for (int i = 0; i < pictures && !load.needsSlices(); ++i, now += interval) {
            const double begin = std::max(now, free);
            free = begin + each;
            load.frameEncoded(begin, free);
        }
        return free - now;
    };
    encode(600, 0.014);
    EXPECT_FALSE(load.needsSlices());
    encode(60, 0.008);
    encode(1, 0.09);
    encode(600, 0.008);
    EXPECT_FALSE(load.needsSlices());
    const double late = encode(600, 0.018);
    EXPECT_TRUE(load.needsSlices());
    EXPECT_LT(late, 2 * interval);
    EXPECT_FALSE(load.canDoWithoutSlices());

    load = EncoderLoad(2);
    encode(60, 0.0095);
    EXPECT_FALSE(load.canDoWithoutSlices());
    encode(60, 0.004);
    EXPECT_TRUE(load.canDoWithoutSlices());
}

TEST(QuantizerControl, staysFineOnTextGrowsCoarseOnDetailedFilmAndComesBackWhenItIsCalm) {
    constexpr int blocks = 8160;
    QuantizerControl control(blocks);
    double now = 0;
    const auto play = [&](int frames, int changed, std::size_t bytes) {
        for (int i = 0; i < frames; ++i)
            control.frameEncoded(now += 1.0 / 60, changed, bytes, false);
    };
    play(600, 20, 6000); // every letter is expensive, but there are few
    EXPECT_EQ(control.quantizer(false), QuantizerControl::finest);
    EXPECT_LT(control.quantizer(true), control.quantizer(false));
    play(120, blocks, 120000);
    EXPECT_GE(control.quantizer(false), QuantizerControl::finest + 3);
    EXPECT_LE(control.quantizer(false), QuantizerControl::coarsest);
    play(60, 20, 500);
    EXPECT_EQ(control.quantizer(false), QuantizerControl::finest);
}

TEST(CameraQuantizer, growsCoarseInADarkRoomAndNotForAClockInTheCorner) {
    constexpr PixelSize size{480, 320};
    Nv12Frame frames[]{Nv12Frame(size), Nv12Frame(size)};
    std::mt19937 random(1);
    const auto after = [&](CameraQuantizer &control, int noise, bool hasClock) {
        std::uniform_int_distribution<int> level(128 - noise, 128 + noise);
        for (int i = 0; i < 2; ++i)
            for (int y = 0; y < size.height; ++y) {
                std::uint8_t *const row = frames[i].luma() + y * frames[i].stride();
                std::generate_n(row, size.width, [&] { return std::uint8_t(level(random)); });
                if (hasClock && y < 8)
                    std::fill_n(row, 8, std::uint8_t(i * 255));
            }
        int quantizer = 0;
        for (int picture = 0; picture < 120; ++picture)
            quantizer = control.next(frames[picture % 2], false);
        return quantizer;
    };
    CameraQuantizer control;
    const int bright = after(control, 1, false);
    EXPECT_EQ(after(control, 1, true), bright);
    EXPECT_GE(bright, CameraQuantizer::finest);
    EXPECT_GE(after(control, 12, false), bright + 5);
    EXPECT_LE(after(control, 100, false), CameraQuantizer::coarsest);
    EXPECT_EQ(after(control, 1, false), bright);
    EXPECT_LT(control.next(frames[0], true), bright);
}

} // namespace
} // namespace vantrell::testing
