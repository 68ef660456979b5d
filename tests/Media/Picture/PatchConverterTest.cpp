// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Picture/PatchConverter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace vantrell::testing {

namespace {

/// A screen in BGRX.
struct Screen {
    explicit Screen(PixelSize pixels)
        : size(pixels), data(std::size_t(pixels.width) * std::size_t(pixels.height) * 4) {}
    FramePatch patch(const PixelRect &rect) const {
        return {rect, data.data() + (std::ptrdiff_t(rect.y) * size.width + rect.x) * 4,
                std::ptrdiff_t(size.width) * 4};
    }
    void set(int x, int y, int r, int g, int b) {
        std::uint8_t *pixel = data.data() + (std::ptrdiff_t(y) * size.width + x) * 4;
        pixel[0] = std::uint8_t(b);
        pixel[1] = std::uint8_t(g);
        pixel[2] = std::uint8_t(r);
        pixel[3] = 77; // what X leaves there means nothing
    }
    PixelSize size;
    std::vector<std::uint8_t> data;
};

Screen randomScreen(PixelSize size, unsigned seed) {
    std::mt19937 random(seed);
    Screen screen(size);
    for (std::uint8_t &byte : screen.data)
        byte = std::uint8_t(random());
    return screen;
}

TEST(BlockConverter, isBt709OfLimitedRangeWithinOneStep) {
    Screen screen({16, 16});
    Nv12Frame frame({16, 16});
    for (int r = 0; r <= 255; r += 51) {
        for (int g = 0; g <= 255; g += 51) {
            for (int b = 0; b <= 255; b += 51) {
                for (int i = 0; i < 256; ++i)
                    screen.set(i % 16, i / 16, r, g, b);
                BlockMap changed({16, 16});
                PatchConverter(convertBlockPortably)
                    .convert(screen.patch({0, 0, 16, 16}), frame, frame, changed);
                const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
                EXPECT_NEAR(frame.luma()[0], 16 + y * 219 / 255, 1) << r << ' ' << g << ' ' << b;
                EXPECT_NEAR(frame.chroma()[0], 128 + (b - y) / 1.8556 * 224 / 255, 1.2)
                    << r << ' ' << g << ' ' << b;
                EXPECT_NEAR(frame.chroma()[1], 128 + (r - y) / 1.5748 * 224 / 255, 1.2)
                    << r << ' ' << g << ' ' << b;
            }
        }
    }
    for (int grey = 0; grey <= 255; ++grey) {
        for (int i = 0; i < 256; ++i)
            screen.set(i % 16, i / 16, grey, grey, grey);
        BlockMap changed({16, 16});
        PatchConverter(convertBlockPortably).convert(screen.patch({0, 0, 16, 16}), frame, frame, changed);
        EXPECT_EQ(frame.chroma()[0], 128);
        EXPECT_EQ(frame.chroma()[1], 128);
    }
    EXPECT_EQ(frame.luma()[0], 235);
}

TEST(BlockConverter, fastCodeEqualsThePlainCodeBitForBit) {
    const Screen screen = randomScreen({165, 83}, 3);
    Nv12Frame plain(screen.size);
    Nv12Frame fast(screen.size);
    BlockMap plainChanged(screen.size);
    BlockMap fastChanged(screen.size);
    const FramePatch whole = screen.patch({0, 0, 165, 83});
    PatchConverter(convertBlockPortably).convert(whole, plain, plain, plainChanged);
    PatchConverter(fastestBlockConverter()).convert(whole, fast, fast, fastChanged);
    const std::vector<std::uint8_t> a(plain.luma(), plain.luma() + plain.stride() * 96);
    const std::vector<std::uint8_t> b(fast.luma(), fast.luma() + fast.stride() * 96);
    EXPECT_EQ(a, b);
    const std::vector<std::uint8_t> c(plain.chroma(), plain.chroma() + plain.stride() * 48);
    const std::vector<std::uint8_t> d(fast.chroma(), fast.chroma() + fast.stride() * 48);
    EXPECT_EQ(c, d);
    EXPECT_EQ(plainChanged.marks(), fastChanged.marks());
}

TEST(PatchConverter, findsTheBlocksThatReallyChangedInALargePatch) {
    Screen screen = randomScreen({160, 96}, 4);
    const PatchConverter converter;
    Nv12Frame frame(screen.size);
    BlockMap changed(screen.size);
    converter.convert(screen.patch({0, 0, 160, 96}), frame, frame, changed);
    changed.clear();
    screen.set(50, 40, 255, 0, 255);
    screen.set(51, 40, 0, 255, 0);
    converter.convert(screen.patch({0, 0, 160, 96}), frame, frame, changed);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(changed.isMarked(3, 2));
    changed.clear();
    converter.convert(screen.patch({0, 0, 160, 96}), frame, frame, changed);
    EXPECT_FALSE(changed.any());
}

TEST(PatchConverter, fillsTheLastBlocksWithThePicturesEdge) {
    Screen screen({17, 17});
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 17; ++x)
            screen.set(x, y, 255, 255, 255);
    Nv12Frame frame(screen.size);
    BlockMap changed(screen.size);
    PatchConverter().convert(screen.patch({0, 0, 17, 17}), frame, frame, changed);
    EXPECT_EQ(frame.luma()[31 * frame.stride() + 31], 235);
    EXPECT_EQ(frame.luma()[17], 235);
}

} // namespace
} // namespace vantrell::testing
