// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Chart.h"
#include "Media/Encoding/BandEncoder.h"
#include "Media/Encoding/X264Encoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

namespace vantrell::bench {

namespace {

constexpr int rounds = 3;

double processorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

/// Never twice the same within a picture, which could be copied.
std::uint32_t scattered(int column, int row, int number) {
    std::uint32_t value = std::uint32_t(column) * 0x9e3779b1U ^ std::uint32_t(row) * 0x85ebca6bU ^
                          std::uint32_t(number) * 0xc2b2ae35U;
    value = (value ^ value >> 15) * 0x2c1b3c6dU;
    return value ^ value >> 13;
}

/// Letter-like marks on paper, others for each number.
void write(Nv12Frame &frame, BlockMap &changed, const PixelRect &place, int number) {
    const PixelRect rect =
        intersection(place, PixelRect{0, 0, frame.picture().width, frame.picture().height});
    for (int y = rect.y; y < rect.bottom(); ++y) {
        std::uint8_t *row = frame.luma() + y * frame.stride();
        for (int x = rect.x; x < rect.right(); ++x) {
            const std::uint32_t letter = scattered(x / 9, y / 18, number);
            const bool isInk =
                y % 18 > 3 && y % 18 < 15 && letter % 7 > 1 &&
                (unsigned(x % 9) == letter % 5 + 1 || (unsigned(y % 18) == letter % 11 + 4 && x % 9 < 7));
            row[x] = isInk ? 40 : 235;
        }
    }
    changed.mark(rect);
}

std::unique_ptr<VideoEncoder> encoderOf(PixelSize size, bool inBands) {
    if (!inBands)
        return *X264Encoder::create(size);
    return *BandEncoder::create(
        size, {.mayUseBands = [] { return true; }, .preparation = SmallEncoders::Preparation::atOnce});
}

/// Milliseconds of the processor for a picture of which a square of so many pixels changes, median of rounds.
double costOf(PixelSize size, double changedPixels, bool inBands) {
    const double share = std::min(1.0, changedPixels / (double(size.width) * size.height));
    const int width = std::max(
        12,
        int(std::lround(std::min<double>(size.width, share == 1 ? size.width : std::sqrt(changedPixels)))));
    const int height = std::max(12, int(std::lround(changedPixels / width)));
    const PixelRect place{(size.width - width) / 2 / 16 * 16,
                          std::max(0, (size.height - height) / 2 / 16 * 16), width, height};
    const auto encoder = encoderOf(size, inBands);
    Nv12Frame frame(size);
    BlockMap changed(size);
    write(frame, changed, {0, 0, size.width, size.height}, 0);
    std::int64_t time = 0;
    (void)encoder->encode(frame, changed, time, true);
    std::vector<double> costs;
    const int pictures = changedPixels > 200'000 ? 6 : 30;
    for (int round = 0; round < rounds; ++round) {
        double spent = 0;
        for (int i = 0; i < pictures + 2; ++i) {
            changed.clear();
            write(frame, changed, place, round * pictures + i + 1);
            const double begin = processorSeconds();
            (void)encoder->encode(frame, changed, time += 1500, false);
            if (i >= 2)
                spent += processorSeconds() - begin;
        }
        costs.push_back(spent / pictures * 1000);
    }
    std::ranges::sort(costs);
    return costs[costs.size() / 2];
}

const std::vector<std::pair<double, std::string>> milliseconds{{0.01, "0.01"}, {0.1, "0.1"}, {1, "1"},
                                                               {10, "10"},     {100, "100"}, {1000, "1000"}};

Chart costByArea() {
    const std::vector<std::pair<PixelSize, std::string>> sizes{{{3840, 2160}, "#1d4ed8"},
                                                               {{1920, 1080}, "#0f766e"}};
    Chart chart{
        .title = "Cost of a picture by what changed",
        .xTitle = "changed pixels",
        .yTitle = "processor time of encoding, ms",
        .xTicks =
            {{100, "100"}, {1e3, "1000"}, {1e4, "10 000"}, {1e5, "100 000"}, {1e6, "1 M"}, {1e7, "10 M"}},
        .yTicks = milliseconds,
        .curves = {}};
    for (const bool inBands : {false, true}) {
        for (const auto &[size, colour] : sizes) {
            Curve curve{.label = std::to_string(size.height) + (inBands ? "p, bands" : "p, one encoder"),
                        .colour = colour,
                        .isDashed = !inBands,
                        .points = {}};
            const double all = double(size.width) * size.height;
            for (double pixels = 180; pixels < all * 2.4; pixels *= 2.5) {
                const double area = std::min(pixels, all);
                curve.points.push_back({area, costOf(size, area, inBands)});
                std::printf("%-24s %9.0f pixels %8.3f ms\n", curve.label.c_str(), area,
                            curve.points.back().y);
                std::fflush(stdout);
            }
            chart.curves.push_back(curve);
        }
    }
    return chart;
}

Chart costBySize() {
    Chart chart{.title = "Cost of a typed letter by the screen's size",
                .xTitle = "pixels of the screen",
                .yTitle = "processor time of encoding, ms",
                .xTicks = {{3e5, "0.3 M"}, {1e6, "1 M"}, {3e6, "3 M"}, {1e7, "10 M"}, {4e7, "40 M"}},
                .yTicks = milliseconds,
                .curves = {}};
    const std::vector<PixelSize> sizes{{800, 600},   {1280, 720},  {1920, 1080},
                                       {2560, 1440}, {3840, 2160}, {7680, 4320}};
    for (const bool inBands : {false, true}) {
        Curve curve{.label = inBands ? "bands" : "one encoder",
                    .colour = inBands ? "#1d4ed8" : "#6b7280",
                    .isDashed = !inBands,
                    .points = {}};
        for (const PixelSize size : sizes) {
            curve.points.push_back({double(size.width) * size.height, costOf(size, 180, inBands)});
            std::printf("%-12s letter on %dx%d %8.3f ms\n", curve.label.c_str(), size.width, size.height,
                        curve.points.back().y);
            std::fflush(stdout);
        }
        chart.curves.push_back(curve);
    }
    return chart;
}

} // namespace
} // namespace vantrell::bench

int main(int argc, char **argv) {
    using namespace vantrell::bench;
    const std::vector<Chart> charts{costByArea(), costBySize()};
    if (argc > 1)
        drawCharts(charts, argv[1]);
}
