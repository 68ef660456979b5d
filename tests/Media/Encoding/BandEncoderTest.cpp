// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BandEncoder.h"
#include "Media/Encoding/BandPlan.h"
#include "Media/Encoding/BandTrial.h"
#include "Media/Encoding/TrialDecoder.h"
#include "Media/Encoding/TrialScreen.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <vector>

namespace vantrell {

namespace {

BandEncoder::Options bandsAtOnce() {
    return {.mayUseBands = [] { return true; }, .preparation = SmallEncoders::Preparation::atOnce};
}

/// Encodes so many pictures of what happens on a screen and holds each against the decoder's.
void compareWithDecoder(PixelSize size, int pictures, std::uint32_t seed) {
    SCOPED_TRACE(std::to_string(size.width) + "x" + std::to_string(size.height) + " seed " +
                 std::to_string(seed));
    const auto encoder = *BandEncoder::create(size, bandsAtOnce());
    TrialDecoder decoder;
    ASSERT_TRUE(decoder.open(encoder->codecConfiguration()));
    TrialScreen screen(size, seed);
    for (int i = 0; i < pictures; ++i) {
        if (i > 0)
            screen.step();
        // Key frames at odd distances, two in a row too, and all quantizers: films make them coarser.
        const bool isKey = i % 97 == 0 || i % 97 == 1 || i % 41 == 40;
        const auto encoded = encoder->encode(screen.frame(), screen.changed(), i * 1500, isKey);
        ASSERT_TRUE(encoded) << encoded.error().message;
        ASSERT_EQ(encoded->isKeyFrame, isKey);
        const auto decoded = decoder.decode(encoded->data);
        ASSERT_TRUE(decoded) << "picture " << i << ": " << decoded.error().message;
        ASSERT_TRUE(equalsDecoded(encoder->reconstruction(), **decoded)) << "picture " << i;
    }
    const bool hasBands = size.width > 256 && size.height > 256;
    EXPECT_TRUE(!hasBands || encoder->picturesInBands() > pictures / 4) << encoder->picturesInBands();
}

TEST(BandEncoder, isSeenByADecoderAsItReckonsItself) {
    const char *more = std::getenv("VANTRELL_BAND_PICTURES");
    const int pictures = more ? std::atoi(more) : 200;
    const std::vector<PixelSize> sizes{{640, 480}, {1280, 720}, {333, 517},   {1021, 65}, {16, 16},
                                       {18, 600},  {2000, 16},  {1601, 1001}, {800, 31}};
    for (std::uint32_t seed = 1; const PixelSize size : sizes)
        compareWithDecoder(size, pictures, seed++);
}

TEST(BandTrial, passesThisLibraryAndRefusesOneThatKeepsItsPicturesElsewhere) {
    const std::atomic<bool> isStopping = false;
    for (const PixelSize size : {PixelSize{1920, 1080}, PixelSize{641, 99}}) {
        for (const bool isLarge : {false, true}) {
            BandTrial trial{.picture = size, .isLarge = isLarge};
            const auto tried = trial.run(isStopping);
            EXPECT_TRUE(tried) << tried.error().message;
            for (trial.margin = 0; trial.margin < 16; trial.margin += 4) {
                const auto refused = trial.run(isStopping);
                ASSERT_FALSE(refused) << size.width << " " << isLarge << " " << trial.margin;
                EXPECT_EQ(refused.error().message, "Bands do not fit together");
            }
        }
    }
}

} // namespace
} // namespace vantrell
