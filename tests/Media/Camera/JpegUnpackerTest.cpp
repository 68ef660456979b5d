// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegUnpacker.h"
#include "Media/Camera/JpegColours.h"
#include "Media/Camera/JpegTransform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>

#include <turbojpeg.h>

namespace vantrell::testing {

namespace {

// Neither side is made of whole units.
constexpr int width = 328;
constexpr int height = 250;

/// Soft shades, hard edges and noise.
std::vector<std::uint8_t> makeJpeg(int subsampling, int quality, const char *marks) {
    std::mt19937 random(3);
    std::vector<std::uint8_t> pixels(std::size_t(width * height * 3));
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int x = int(i / 3) % width;
        const int y = int(i / 3) / width;
        pixels[i] =
            std::uint8_t((x / 40 + y / 30) % 3 == 0 ? 250 * (x / 7 % 2)
                                                    : 40 + x / 3 + int(i % 3) * 20 + int(random() % 9));
    }
    setenv("TJ_RESTART", marks, 1);
    tjhandle compressor = tjInitCompress();
    unsigned char *data = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(tjCompress2(compressor, pixels.data(), width, 0, height, TJPF_RGB, &data, &size, subsampling,
                          quality, 0),
              0);
    unsetenv("TJ_RESTART");
    const std::vector<std::uint8_t> jpeg(data, data + size);
    tjFree(data);
    tjDestroy(compressor);
    return jpeg;
}

/// The same without its Huffman tables.
std::vector<std::uint8_t> withoutCodes(std::vector<std::uint8_t> jpeg) {
    constexpr std::array<std::uint8_t, 2> mark{0xff, 0xc4};
    for (auto at = jpeg.begin();;) {
        at = std::search(at, jpeg.end(), mark.begin(), mark.end());
        if (at == jpeg.end())
            return jpeg;
        at = jpeg.erase(at, at + 2 + (at[2] << 8 | at[3]));
    }
}

/// What the library makes of a picture of that size without any fault, by its exact transform.
struct Reference {
    explicit Reference(std::span<const std::uint8_t> jpeg) {
        tjhandle reader = tjInitDecompress();
        std::array<std::uint8_t *, 3> to{planes[0].data(), planes[1].data(), planes[2].data()};
        std::array<int, 3> strides{stride, stride, stride};
        int readWidth = 0;
        int readHeight = 0;
        int subsampling = 0;
        int colours = 0;
        isGood = tjDecompressHeader3(reader, jpeg.data(), jpeg.size(), &readWidth, &readHeight, &subsampling,
                                     &colours) == 0 &&
                 readWidth <= stride && readHeight <= stride &&
                 tjDecompressToYUVPlanes(reader, jpeg.data(), jpeg.size(), to.data(), readWidth,
                                         strides.data(), readHeight, TJFLAG_STOPONWARNING) == 0;
        error = tjGetErrorStr2(reader);
        tjDestroy(reader);
    }
    static constexpr int stride = 1024;
    std::array<std::vector<std::uint8_t>, 3> planes = {std::vector<std::uint8_t>(stride * stride),
                                                       std::vector<std::uint8_t>(stride *stride),
                                                       std::vector<std::uint8_t>(stride *stride)};
    bool isGood = false;
    std::string error;
};

int largestDifference(const std::uint8_t *one, std::ptrdiff_t oneStride, const std::uint8_t *other,
                      std::ptrdiff_t otherStride, int columns, int rows) {
    int largest = 0;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            largest = std::max(largest, std::abs(one[y * oneStride + x] - other[y * otherStride + x]));
    return largest;
}

TEST(JpegUnpacker, paintsAsTheLibraryDoes) {
    if (!isJpegTransformQuick())
        GTEST_SKIP() << "this processor leaves it to the library";
    for (const int subsampling : {TJSAMP_420, TJSAMP_422})
        for (const int quality : {30, 75, 96})
            for (const char *marks : {"0", "1", "7B"}) {
                SCOPED_TRACE(::testing::Message() << subsampling << ' ' << quality << ' ' << marks);
                const auto jpeg = makeJpeg(subsampling, quality, marks);
                const FramePtr painted(av_frame_alloc());
                // As some cameras send it.
                const auto sent = quality == 75 ? withoutCodes(jpeg) : jpeg;
                ASSERT_TRUE(JpegUnpacker().unpack(sent, *painted, true, 0));
                ASSERT_EQ(painted->format, AV_PIX_FMT_NV12);
                ASSERT_EQ(std::pair(painted->width, painted->height), std::pair(width, height));
                const Reference expected(jpeg);
                ASSERT_TRUE(expected.isGood);
                std::vector<std::uint8_t> limited(std::size_t(width * height));
                limitLuma(expected.planes[0].data(), expected.stride, limited.data(), width, width, height);
                EXPECT_LE(largestDifference(painted->data[0], painted->linesize[0], limited.data(), width,
                                            width, height),
                          2);
                limitChroma(expected.planes[1].data(), expected.planes[2].data(), expected.stride,
                            subsampling == TJSAMP_422, limited.data(), width, width / 2, height / 2);
                EXPECT_LE(largestDifference(painted->data[1], painted->linesize[1], limited.data(), width,
                                            width, height / 2),
                          2);
            }
}

TEST(JpegUnpacker, takesNoPictureThatTheLibraryFindsFaulty) {
    std::mt19937 random(11);
    for (const char *marks : {"0", "1"}) {
        const auto whole = makeJpeg(TJSAMP_422, 60, marks);
        int painted = 0;
        for (int trial = 0; trial < 300; ++trial) {
            auto spoilt = whole;
            for (int flips = 1 + trial % 2; flips > 0; --flips)
                // Half of them in the header.
                spoilt[random() % (trial % 4 < 2 ? std::size_t(700) : spoilt.size())] ^=
                    std::uint8_t(1u << random() % 8);
            if (trial % 5 == 0)
                spoilt.resize(random() % spoilt.size());
            const FramePtr quick(av_frame_alloc());
            if (!JpegUnpacker().unpack(spoilt, *quick, true, 0) || quick->format != AV_PIX_FMT_NV12)
                continue;
            ++painted;
            const Reference reference(spoilt);
            EXPECT_TRUE(reference.isGood) << trial << ' ' << reference.error;
        }
        // What is flipped may be a number.
        EXPECT_GT(painted, isJpegTransformQuick() ? 20 : -1);
    }
}

} // namespace
} // namespace vantrell::testing
