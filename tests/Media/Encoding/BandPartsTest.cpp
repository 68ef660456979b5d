// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BandPlan.h"
#include "Media/H264/EmulationPrevention.h"
#include "Media/H264/SliceHeader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace vantrell {

namespace {

TEST(SliceHeader, isReplacedWhateverBytesFollow) {
    std::minstd_rand random(5);
    const auto below = [&](unsigned bound) { return std::uint32_t(random() % bound); };
    for (int i = 0; i < 3000; ++i) {
        const StreamLayout layout{.frameNumberBits = 4 + int(below(13)),
                                  .initialQuantizer = 26,
                                  .hasDeblockingControl = below(2) == 0};
        const auto header = [&](bool isKey) {
            return SliceHeader{.isKey = isKey,
                               .firstBlock = int(below(40000)),
                               .frameNumber = below(1U << layout.frameNumberBits),
                               .keyId = isKey ? below(65536) : 0,
                               .cabacTable = isKey ? 0 : below(3),
                               .quantizer = int(below(52))};
        };
        const SliceHeader before = header(i % 2 == 0);
        const SliceHeader after = header(i % 2 == 0);
        // Mostly zeros, which is what has to be kept from looking like a start code.
        std::vector<std::uint8_t> data(1 + below(12));
        std::ranges::generate(data, [&] { return std::uint8_t(below(3) == 0 ? below(5) : 0); });
        data.push_back(0x80);

        std::vector<std::uint8_t> stream;
        appendSlice(stream, layout, before, data);
        const auto unit = splitSized(stream).at(0);
        const auto parsed = parseSlice(unit, layout);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->header, before);

        std::vector<std::uint8_t> wanted;
        appendSlice(wanted, layout, after, data);
        std::vector<std::uint8_t> rewritten;
        appendSliceWithHeader(rewritten, layout, after, unit, *parsed);
        ASSERT_EQ(rewritten, wanted);
        const std::vector<std::uint8_t> startCode{0, 0, 1};
        EXPECT_TRUE(std::ranges::search(splitSized(wanted).at(0), startCode).empty());
        for (std::size_t cut = 1; cut < unit.size() && cut < parsed->dataStart; ++cut)
            EXPECT_FALSE(parseSlice(unit.first(cut), layout));
    }
}

/// Every touched block is in exactly one band, all of them are in the picture and in the order of slices.
void checkPlan(const BlockMap &touched) {
    const auto bands = planBands(touched);
    if (!bands)
        return;
    int next = 0;
    std::vector<int> covered(touched.marks().size());
    for (const BlockArea &band : *bands) {
        const int first = band.row * touched.columns() + band.column;
        ASSERT_GE(first, next);
        ASSERT_TRUE(band.rows == 1 || band.columns == touched.columns());
        ASSERT_TRUE(band.column >= 0 && band.right() <= touched.columns() && band.bottom() <= touched.rows());
        next = first + band.count();
        std::fill_n(covered.begin() + first, band.count(), 1);
    }
    for (std::size_t i = 0; i < covered.size(); ++i)
        ASSERT_TRUE(!touched.marks()[i] || covered[i]);
}

TEST(BandPlan, coversWhatIsTouchedOnceAndAsCheaplyAsItCan) {
    const PixelSize screen{3840, 2160};
    BlockMap touched(screen);
    EXPECT_EQ(planBands(touched), std::vector<BlockArea>());
    touched.mark({800, 320, 2, 18});
    EXPECT_EQ(planBands(touched), (std::vector<BlockArea>{{50, 20, 8, 1}, {50, 21, 8, 1}}));
    touched.mark({3830, 320, 10, 16}); // far away in the same row, at the edge
    EXPECT_EQ(planBands(touched), (std::vector<BlockArea>{{50, 20, 8, 1}, {232, 20, 8, 1}, {50, 21, 8, 1}}));
    touched.mark({1000, 1000, 1280, 720}); // a film
    ASSERT_EQ(planBands(touched)->size(), 4U);
    EXPECT_EQ(planBands(touched)->back(), (BlockArea{0, 62, 240, 48}));
    touched.markAll();
    EXPECT_FALSE(planBands(touched));

    std::minstd_rand random(9);
    const auto below = [&](int bound) { return int(random() % std::uint32_t(bound)); };
    for (int i = 0; i < 3000; ++i) {
        const PixelSize size{16 + below(i % 3 == 0 ? 4000 : 700), 16 + below(i % 3 == 0 ? 2200 : 500)};
        BlockMap marks(size);
        for (int n = below(8); n >= 0; --n)
            marks.mark({below(size.width), below(size.height), 1 + below(i % 5 == 0 ? 800 : 40),
                        1 + below(i % 7 == 0 ? 300 : 30)});
        checkPlan(marks);
    }
}

} // namespace
} // namespace vantrell
