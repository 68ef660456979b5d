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

/// The band encoder and a decoder side by side.
class Witness {
public:
    explicit Witness(PixelSize size, BandEncoder::Options options = bandsAtOnce())
        : encoder(*BandEncoder::create(size, std::move(options))) {
        EXPECT_TRUE(decoder.open(encoder->codecConfiguration()));
    }
    /// The decoder's picture is the encoder's; the frame is of the asked kind.
    ::testing::AssertionResult agrees(const std::expected<EncodedFrame, PlatformError> &encoded, bool isKey) {
        if (!encoded)
            return ::testing::AssertionFailure() << encoded.error().message;
        if (encoded->isKeyFrame != isKey)
            return ::testing::AssertionFailure() << "key frame: " << encoded->isKeyFrame;
        const auto decoded = decoder.decode(encoded->data);
        if (!decoded)
            return ::testing::AssertionFailure() << decoded.error().message;
        if (!equalsDecoded(encoder->reconstruction(), **decoded))
            return ::testing::AssertionFailure() << "another picture";
        return ::testing::AssertionSuccess();
    }

    std::unique_ptr<BandEncoder> encoder;
    TrialDecoder decoder;
};

/// Encodes so many pictures of what happens on a screen and holds each against the decoder's.
void compareWithDecoder(PixelSize size, int pictures, std::uint32_t seed,
                        std::optional<bool> isLarge = std::nullopt) {
    SCOPED_TRACE(std::to_string(size.width) + "x" + std::to_string(size.height) + " seed " +
                 std::to_string(seed));
    auto options = bandsAtOnce();
    options.isLarge = isLarge;
    Witness witness(size, options);
    TrialScreen screen(size, seed);
    for (int i = 0; i < pictures; ++i) {
        if (i % 40 == 10)
            screen.openPage();
        else if (i % 40 > 10 && i % 40 < 25)
            screen.scrollPage(i / 40 % 2 == 0 ? i / 40 - 7 : i * 5 % 90 - 45);
        else if (i % 40 > 30 && i % 4 != 0)
            // A film in a window.
            screen.moveUnder({size.width / 5, size.height / 3, size.width / 2, size.height / 4 + 32},
                             i % 5 - 2, 2);
        else if (i > 0)
            screen.step();
        // Key frames at odd distances, two in a row too, and all quantizers: films make them coarser.
        const bool isKey = i % 97 == 0 || i % 97 == 1 || i % 41 == 40;
        ASSERT_TRUE(
            witness.agrees(witness.encoder->encode(screen.frame(), screen.changed(), i * 1500, isKey), isKey))
            << "picture " << i;
        // Now and then it rests.
        if (const auto time = witness.encoder->refinesAt(); time && i % 7 == 0) {
            const auto refined = witness.encoder->refine(screen.frame(), *time);
            ASSERT_TRUE(refined);
            ASSERT_TRUE(!*refined || witness.agrees(**refined, false)) << "refined " << i;
        }
    }
    const bool hasBands = size.width > 256 && size.height > 256;
    EXPECT_TRUE(!hasBands || witness.encoder->picturesInBands() > pictures / 4)
        << witness.encoder->picturesInBands();
    EXPECT_TRUE(!hasBands || pictures < 100 || witness.encoder->blocksCopied() > 2 * pictures)
        << witness.encoder->blocksCopied();
}

TEST(BandEncoder, isSeenByADecoderAsItReckonsItself) {
    const char *more = std::getenv("VANTRELL_BAND_TIMES");
    const double times = more ? std::atof(more) : 1;
    // The large ones take the way of large pictures.
    const std::vector<std::pair<PixelSize, int>> sizes{
        {{640, 480}, 400}, {{1280, 720}, 300}, {{333, 517}, 300}, {{1021, 65}, 300},
        {{16, 16}, 200},   {{18, 600}, 200},   {{2000, 16}, 200}, {{800, 31}, 200},
        {{7680, 64}, 60},  {{1601, 1001}, 60}, {{2561, 1441}, 20}};
    for (std::uint32_t seed = 1; const auto &[size, pictures] : sizes)
        compareWithDecoder(size, int(pictures * times), seed++);
    // Threads of the library's own finish the whole pictures that bands refer to.
    for (const std::uint32_t seed : {21, 22, 23})
        compareWithDecoder({640, 480}, int(150 * times), seed, true);
    // In these a page moves by more than the encoder of a band refers beyond its edge.
    for (const std::uint32_t seed : {132, 138})
        compareWithDecoder({1280, 720}, int(80 * times), seed, true);
}

TEST(BandEncoder, goesOnWithAKeyFrameAndOneEncoderOnceABandFails) {
    const PixelSize size{640, 480};
    auto options = bandsAtOnce();
    options.makeSmall = [](const StreamFacts &stream, int columns, int rows) {
        return rows < 6 ? SmallEncoder::create(stream, columns, rows) : nullptr;
    };
    Witness witness(size, options);
    TrialScreen screen(size, 3);
    bool failed = false;
    for (int i = 0; i < 60; ++i) {
        if (i > 10)
            screen.step();
        else if (i > 0)
            screen.moveUnder({320, 240, 48, 16}, 2, 2);
        const auto before = witness.encoder->picturesInBands();
        const auto encoded = witness.encoder->encode(screen.frame(), screen.changed(), i * 1500, i == 0);
        ASSERT_TRUE(encoded);
        ASSERT_TRUE(witness.agrees(encoded, encoded->isKeyFrame)) << i;
        EXPECT_FALSE(failed && (encoded->isKeyFrame || witness.encoder->picturesInBands() > before));
        failed |= i > 0 && encoded->isKeyFrame;
    }
    EXPECT_TRUE(failed);
    EXPECT_GT(witness.encoder->picturesInBands(), 0);
}

/// Coloured letters at an odd distance: copies would blur, so an encoder has to find where they lay. They
/// fill the upper `height` pixels of the picture.
void takesFewBits(int distance, int height) {
    SCOPED_TRACE(distance);
    const PixelSize size{640, 480};
    Witness witness(size);
    Nv12Frame frame(size);
    BlockMap changed(size);
    changed.mark({0, 0, size.width, height});
    const auto noise = [](int x, int y) { return std::uint32_t(x * 7919 + y * 104729) * 2654435761U >> 24; };
    std::vector<std::size_t> sizes;
    for (int i = 0; i < 6; ++i) {
        const int top = i < 2 ? i * 5000 : 5000 + (i - 1) * distance;
        for (int y = 0; y < height; ++y) {
            std::uint8_t *luma = frame.luma() + y * frame.stride();
            std::uint8_t *chroma = frame.chroma() + y / 2 * frame.stride();
            for (int x = 0; x < size.width; ++x) {
                luma[x] = std::uint8_t(40 + noise(x / 4, (top + y) / 4) * 3 / 4);
                chroma[x] = std::uint8_t(64 + noise(x / 16 * 2 + x % 2, (top + y) / 24) / 4);
            }
        }
        const auto encoded = witness.encoder->encode(frame, changed, i * 1500, i == 0);
        ASSERT_TRUE(witness.agrees(encoded, i == 0)) << i;
        sizes.push_back(encoded->data.size());
    }
    EXPECT_LT(witness.encoder->blocksCopied(), 100);
    EXPECT_LT(sizes[5], sizes[1] / 2) << ::testing::PrintToString(sizes);
}

TEST(BandEncoder, takesFewBitsForWhatIsScrolledFar) {
    takesFewBits(39, 480);
    // In bands.
    takesFewBits(19, 240);
}

TEST(BandEncoder, leavesNoTracesOfLettersOnPaperThatIsScrolled) {
    const PixelSize size{1280, 720};
    Witness witness(size);
    TrialScreen screen(size, 9);
    screen.openPage();
    for (int i = 0; i < 60; ++i) {
        if (i > 0)
            screen.scrollPage(-7);
        ASSERT_TRUE(witness.agrees(
            witness.encoder->encode(screen.frame(), screen.changed(), i * 1500, i == 0), i == 0));
    }
    const Nv12Frame &frame = screen.frame();
    const ReconstructedPicture &made = witness.encoder->reconstruction();
    int plain = 0;
    int clean = 0;
    for (int i = 0; i < made.columns * made.rows; ++i) {
        const int x = i % made.columns * blockEdge;
        const int y = i / made.columns * blockEdge;
        const auto colour = PlainColour::of({frame.luma() + y * frame.stride() + x, frame.stride()},
                                            {frame.chroma() + y / 2 * frame.stride() + x, frame.stride()});
        plain += colour.has_value();
        clean += colour && colour->fills({made.luma + y * made.lumaStride + x, made.lumaStride},
                                         {made.chroma + y / 2 * made.chromaStride + x, made.chromaStride},
                                         blockEdge / 2);
    }
    EXPECT_GT(plain, 100);
    // Where the page comes into sight letters are encoded, and traces with them.
    EXPECT_GT(clean, plain * 2 / 3) << plain;
}

double squaredError(const BandEncoder &encoder, const Nv12Frame &frame) {
    const ReconstructedPicture &made = encoder.reconstruction();
    double sum = 0;
    for (int y = 0; y < frame.picture().height; ++y) {
        for (int x = 0; x < frame.picture().width; ++x) {
            const double error = made.luma[y * made.lumaStride + x] - frame.luma()[y * frame.stride() + x];
            sum += error * error;
        }
    }
    return sum;
}

TEST(BandEncoder, makesFinerWithinASecondWhatHasStoppedAndThatOnce) {
    constexpr std::int64_t second = VideoEncoder::timeScale;
    const PixelSize size{640, 480};
    Witness witness(size);
    BandEncoder &encoder = *witness.encoder;
    std::minstd_rand random(3);
    Nv12Frame frame(size);
    BlockMap changed(size);
    changed.markAll();
    std::int64_t time = 0;
    for (int i = 0; i < 60; ++i, time += second / 60) {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                frame.luma()[y * frame.stride() + x] =
                    std::uint8_t(100 + (x + i) % 64 + int(random() >> 8 & 31));
        ASSERT_TRUE(witness.agrees(encoder.encode(frame, changed, time, i == 0), i == 0));
    }
    // A caret that blinks does not keep the rest from it.
    const double moving = squaredError(encoder, frame);
    changed.clear();
    changed.markBlock(3, 3);
    ASSERT_TRUE(witness.agrees(encoder.encode(frame, changed, time, false), false));
    const std::int64_t stopped = time;
    int refined = 0;
    for (int i = 0; i < 10 && encoder.refinesAt(); ++i) {
        time = std::max(time + 1, *encoder.refinesAt());
        const auto picture = encoder.refine(frame, time);
        ASSERT_TRUE(picture);
        refined += picture->has_value();
        ASSERT_TRUE(!*picture || witness.agrees(**picture, false));
    }
    EXPECT_FALSE(encoder.refinesAt());
    EXPECT_LT(time, stopped + second);
    EXPECT_TRUE(refined == 1 || refined == 2) << refined;
    EXPECT_LT(squaredError(encoder, frame), 0.6 * moving);
}

TEST(BandTrial, passesThisLibraryAndRefusesOneThatKeepsItsPicturesElsewhere) {
    const std::atomic<bool> isStopping = false;
    for (const PixelSize size : {PixelSize{1920, 1080}, PixelSize{641, 99}}) {
        for (const bool isLarge : {false, true}) {
            BandTrial trial{.picture = size, .isLarge = isLarge};
            const auto tried = trial.run(isStopping);
            EXPECT_TRUE(tried) << tried.error().message;
            for (const int margin : {0, 4, 8, 12}) {
                trial.makeSmall = [margin](StreamFacts stream, int columns, int rows) {
                    stream.margin = margin;
                    return SmallEncoder::create(stream, columns, rows);
                };
                const auto refused = trial.run(isStopping);
                ASSERT_FALSE(refused) << size.width << " " << isLarge << " " << margin;
                EXPECT_EQ(refused.error().message, "Bands do not fit together");
            }
        }
    }
}

} // namespace
} // namespace vantrell
