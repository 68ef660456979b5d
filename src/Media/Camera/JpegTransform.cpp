// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegTransform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantrell {

namespace {

constexpr int edge = 8;
constexpr int places = edge * edge;
constexpr double lumaShare = 219.0 / 255;
constexpr double chromaShare = 224.0 / 255;
constexpr double lumaMiddle = 16 + 128 * lumaShare;
constexpr double chromaMiddle = 128;

// Sums are 1/32 of a step, and of 16 bits, many of which fit into a vector. A part is multiplied by 16, and
// its wave by as much as leaves sums of that kind in the upper half of the product.
constexpr int sumBits = 5;
constexpr int valueBits = 4;
constexpr int waveBits = 16 + sumBits - valueBits;

/// How each place of a block contributes to its rows, in the order of the file.
template <int Rows>
using Waves = std::array<std::array<std::int16_t, std::size_t(Rows *edge)>, std::size_t(places)>;

template <int Rows>
Waves<Rows> wavesOf(double share) {
    const auto wave = [](int frequency, int at) {
        const double angle = (2 * at + 1) * frequency * std::numbers::pi / (2 * edge);
        return std::cos(angle) * (frequency == 0 ? std::numbers::sqrt2 / 4 : 0.5);
    };
    constexpr int merged = edge / Rows;
    Waves<Rows> waves;
    int across = 0;
    int down = 0;
    for (auto &each : waves) {
        for (int i = 0; i < Rows * edge; ++i) {
            double vertical = 0;
            for (int row = 0; row < merged; ++row)
                vertical += wave(down, i / edge * merged + row) / merged;
            each[std::size_t(i)] =
                std::int16_t(std::lround(wave(across, i % edge) * vertical * share * (1 << waveBits)));
        }
        // From one diagonal to the next, to and fro.
        const bool isUpwards = (across + down) % 2 == 0;
        int &growing = isUpwards ? across : down;
        int &shrinking = isUpwards ? down : across;
        if (growing == edge - 1)
            ++shrinking;
        else {
            ++growing;
            shrinking = std::max(shrinking - 1, 0);
        }
    }
    return waves;
}

template <int Rows>
using Sums = std::array<std::uint16_t, std::size_t(Rows *edge)>;

// The inner loops are simple enough for the compiler to make vectors of them.

template <int Rows>
[[gnu::always_inline]] inline void addUp(const JpegBlock &block, const Waves<Rows> &waves, double share,
                                         double middle, Sums<Rows> &sums) {
    constexpr int one = 1 << sumBits;
    constexpr int precision = 10;
    const int perMean = int(share * one / edge * (1 << precision) + 0.5);
    // What is cut off of the products is a half in the mean.
    const int mean =
        int(middle * one + 0.5) + one / 2 + (block.mean * perMean >> precision) + block.count / 2;
    sums.fill(std::uint16_t(mean));
    for (int i = 0; i < block.count; ++i) {
        const JpegBlock::Part part = block.parts[std::size_t(i)];
        const auto &wave = waves[part.place];
        const auto value = std::int16_t(part.value << valueBits);
        for (std::size_t at = 0; at < sums.size(); ++at)
            sums[at] = std::uint16_t(sums[at] + ((value * wave[at]) >> 16));
    }
}

[[gnu::always_inline]] inline std::uint8_t limited(std::uint16_t sum, int highest) {
    return std::uint8_t(std::clamp(std::int16_t(sum) >> sumBits, 16, highest));
}

template <int Rows>
[[gnu::always_inline]] inline void paintPairs(const JpegBlock &cb, const JpegBlock &cr, std::uint8_t *to,
                                              std::ptrdiff_t stride) {
    static const auto waves = wavesOf<Rows>(chromaShare);
    Sums<Rows> blue;
    Sums<Rows> red;
    addUp<Rows>(cb, waves, chromaShare, chromaMiddle, blue);
    addUp<Rows>(cr, waves, chromaShare, chromaMiddle, red);
    for (int y = 0; y < Rows; ++y, to += stride)
        for (int x = 0; x < edge; ++x) {
            to[2 * x] = limited(blue[std::size_t(y * edge + x)], 240);
            to[2 * x + 1] = limited(red[std::size_t(y * edge + x)], 240);
        }
}

} // namespace

bool isJpegTransformQuick() {
    return __builtin_cpu_supports("avx2");
}

[[gnu::target("avx2")]] void paintLuma(const JpegBlock &block, std::uint8_t *to, std::ptrdiff_t stride) {
    static const auto waves = wavesOf<edge>(lumaShare);
    Sums<edge> sums;
    addUp<edge>(block, waves, lumaShare, lumaMiddle, sums);
    for (int y = 0; y < edge; ++y, to += stride)
        for (int x = 0; x < edge; ++x)
            to[x] = limited(sums[std::size_t(y * edge + x)], 235);
}

[[gnu::target("avx2")]] void paintChroma(const JpegBlock &cb, const JpegBlock &cr, bool isTall,
                                         std::uint8_t *to, std::ptrdiff_t stride) {
    isTall ? paintPairs<edge / 2>(cb, cr, to, stride) : paintPairs<edge>(cb, cr, to, stride);
}

} // namespace vantrell
