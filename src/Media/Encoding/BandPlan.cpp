// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BandPlan.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace vantrell {

namespace {

// Costs in macroblocks that are passed over: 0.25 microseconds each on a core of 2.5 GHz.

/// Of a call of an encoder.
constexpr int callCost = 75;
/// Of the bytes that a strip's slice and the one behind it begin with, and of what rows that do not see each
/// other lose.
constexpr int sliceCost = 75;
/// Bands that cost more than that of the whole picture are not worth their copies; those of large ones not
/// their memory either.
constexpr double mostShare = 0.75;
constexpr double mostShareOfLarge = 0.5;
constexpr int largeBlocks = 10000;
constexpr std::size_t mostStrips = 16;

// Encoders are kept for each shape, so that there are few.
constexpr std::array stripWidths{8, 32, 128};
constexpr std::array bandHeights{1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 96, 128, 192, 256, 384};

/// The touched part of a row.
struct RowRun {
    int first;
    int last;
};

BlockArea stripOf(const RowRun &run, int row, int columns) {
    const auto width = std::ranges::lower_bound(stripWidths, run.last - run.first + 1);
    if (width == stripWidths.end() || *width >= columns)
        return {0, row, columns, 1};
    return {std::min(run.first, columns - *width), row, *width, 1};
}

/// A row's strips; runs that are near each other share one.
void appendStrips(const BlockMap &touched, int row, std::vector<BlockArea> &strips) {
    if (!touched.anyInRow(row))
        return;
    const std::size_t begin = strips.size();
    std::optional<RowRun> run;
    for (int column = 0; column < touched.columns(); ++column) {
        if (!touched.isMarked(column, row))
            continue;
        if (run && column - run->last > callCost + sliceCost) {
            strips.push_back(stripOf(*run, row, touched.columns()));
            run.reset();
        }
        run = RowRun{run ? run->first : column, column};
    }
    if (run)
        strips.push_back(stripOf(*run, row, touched.columns()));
    for (std::size_t i = begin + 1; i < strips.size(); ++i) {
        if (strips[i].column < strips[i - 1].right()) {
            strips.resize(begin);
            strips.push_back({0, row, touched.columns(), 1});
        }
    }
}

int costOf(const std::vector<BlockArea> &areas, int each) {
    return std::accumulate(areas.begin(), areas.end(), 0,
                           [each](int sum, const BlockArea &area) { return sum + each + area.count(); });
}

/// Nothing when no band is that high.
std::optional<BlockArea> bandOf(int top, int bottom, const BlockMap &picture) {
    const auto height = std::ranges::lower_bound(bandHeights, bottom - top);
    if (height == bandHeights.end() || *height >= picture.rows())
        return std::nullopt;
    return BlockArea{0, std::min(top, picture.rows() - *height), picture.columns(), *height};
}

/// A touched row at least, then rows of which none but single ones are untouched.
struct RowGroup {
    int top;
    int bottom;
    std::vector<BlockArea> strips;
};

std::vector<RowGroup> groupsOf(const BlockMap &touched) {
    std::vector<RowGroup> groups;
    std::vector<BlockArea> strips;
    for (int row = 0; row < touched.rows(); ++row) {
        strips.clear();
        appendStrips(touched, row, strips);
        if (strips.empty())
            continue;
        if (groups.empty() || row > groups.back().bottom + 1)
            groups.push_back({row, row, {}});
        groups.back().bottom = row + 1;
        groups.back().strips.insert(groups.back().strips.end(), strips.begin(), strips.end());
    }
    return groups;
}

/// Makes one of those that overlap; false when no band is high enough.
bool joinOverlapping(std::vector<BlockArea> &bands, const BlockMap &picture) {
    for (std::size_t i = 1; i < bands.size();) {
        if (bands[i].row >= bands[i - 1].bottom()) {
            ++i;
            continue;
        }
        const auto joined = bandOf(std::min(bands[i - 1].row, bands[i].row),
                                   std::max(bands[i - 1].bottom(), bands[i].bottom()), picture);
        if (!joined)
            return false;
        bands[i - 1] = *joined;
        bands.erase(bands.begin() + std::ptrdiff_t(i));
        i = std::max<std::size_t>(i - 1, 1);
    }
    return true;
}

} // namespace

double worthwhileShare(int blocks) {
    return blocks > largeBlocks ? mostShareOfLarge : mostShare;
}

std::optional<std::vector<BlockArea>> planBands(const BlockMap &touched) {
    std::vector<BlockArea> bands;
    std::vector<BlockArea> strips;
    for (const RowGroup &group : groupsOf(touched)) {
        const auto band = bandOf(group.top, group.bottom, touched);
        const bool fitsStrips = strips.size() + group.strips.size() <= mostStrips;
        if (fitsStrips &&
            (!band || costOf(group.strips, callCost + sliceCost) < callCost + sliceCost + band->count()))
            strips.insert(strips.end(), group.strips.begin(), group.strips.end());
        else if (band)
            bands.push_back(*band);
        else
            return std::nullopt;
    }
    std::ranges::sort(bands, {}, &BlockArea::row);
    if (!joinOverlapping(bands, touched))
        return std::nullopt;
    std::erase_if(strips, [&](const BlockArea &strip) {
        return std::ranges::any_of(
            bands, [&](const BlockArea &band) { return strip.row >= band.row && strip.row < band.bottom(); });
    });
    bands.insert(bands.end(), strips.begin(), strips.end());
    const int blocks = touched.columns() * touched.rows();
    if (costOf(bands, callCost) > worthwhileShare(blocks) * (callCost + blocks))
        return std::nullopt;
    std::ranges::sort(bands, [](const BlockArea &a, const BlockArea &b) {
        return a.row != b.row ? a.row < b.row : a.column < b.column;
    });
    return bands;
}

} // namespace vantrell
